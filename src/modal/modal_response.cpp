#include "modal/modal_response.h"

#include <cmath>
#include <cstdint>
#include <bit>
#include <string>
#include <vector>

#include "runcontrol/checked_math.h"
#include "runcontrol/number_text.h"
#include "runcontrol/text_files.h"
#include "modal/response_curve.h"

namespace tremodal {

namespace {

constexpr f64 kPi = 3.14159265358979;
// Rotational excitation of a mode shorter than this period is scaled up by
// 2 pi / 0.4: the rocking input of short-period modes follows the ground
// acceleration rather than the displacement.
constexpr f32 kRotationPeriod = 0.4f;
// A double at or beyond this rounds to an infinite single (see StoreF32).
constexpr f64 kSingleOverflow = 0x1.ffffffp127;
// Bytes of one node in a block of the .HS file: six (i32 equation, f32 value).
constexpr std::size_t kNodeBytes = 48;

const char* const kAccelHeading =
    "Node  Mode   Period     x          y          z          xr         yr         zr!";
const char* const kCombHeading =
    "Node CombType     x          y          z          xr         yr         zr!  ";

// The direction scale c of mode m. Translations take the direction factor as
// it stands; rotations take it as well for a period of 0.4 s or more, and
// 2 pi / 0.4 times it below.
f32 DirectionScale(RunState& s, i16 d, i32 m) {
    const f32 factor = s.Options.DirFactor(d);
    if (d <= 3) return factor;
    const f32 period = ModePeriod(s.Freq.Omega(m));
    if (period >= kRotationPeriod) return factor;
    return StoreF32(f64(factor) * 2 * kPi / 0.4);
}

// The responses in the order the products are defined, equation by equation
// and mode by mode, every store checked. Run only when the fast pass met a
// fault, so that the failure raised is the one this order meets first.
void ComputeResponsesLiterally(RunState& s, i16 d, i16 modes) {
    for (i32 e = 1; e <= s.Freq.NumDof; ++e) {
        for (i16 m = 1; m <= modes; ++m) {
            const f64 c = DirectionScale(s, d, m);
            const f64 disp = f64(s.Curve.ModalSpectrum(m)) * s.Participation(m) * c * s.Freq.ModeShape(e, m);
            s.ModalDisp(e, m) = StoreF32(disp);
            const f64 omega = s.Freq.Omega(m);
            s.ModalAccel(e, m) = StoreF32(disp * omega * omega);
        }
    }
}

// The responses mode by mode, running down the contiguous slots of each mode.
// S x Gamma x c is the left part of the product in the same left-to-right
// order, so working it once per mode gives the same bits. Returns false at
// the first fault, leaving the rest to the literal pass.
bool ComputeResponsesFast(RunState& s, i16 d, i16 modes) {
    const i32 dof = s.Freq.NumDof;
    if (dof < 1) return true;
    const std::int64_t stride = std::int64_t(dof) + 1;
    const f32* shape = s.Freq.ModeShape.Data();
    f32* dispOut = s.ModalDisp.Data();
    f32* accelOut = s.ModalAccel.Data();
    for (i16 m = 1; m <= modes; ++m) {
        f64 c = 0;
        try {
            c = DirectionScale(s, d, m);
        } catch (const Failure&) {
            return false;
        }
        const f64 scale = f64(s.Curve.ModalSpectrum(m)) * s.Participation(m) * c;
        const f64 omega = s.Freq.Omega(m);
        const std::int64_t base = std::int64_t(m) * stride;
        // ModalDisp and ModalAccel are allocated with ModeShape's bounds.
        if (s.ModalDisp.Upper1() != dof || s.ModalAccel.Upper1() != dof || s.Freq.ModeShape.Upper1() != dof ||
            s.Freq.ModeShape.Upper2() < m || s.ModalDisp.Upper2() < m || s.ModalAccel.Upper2() < m) {
            return false;
        }
        for (std::int64_t e = 1; e <= dof; ++e) {
            const f64 disp = scale * shape[base + e];
            const f64 accel = disp * omega * omega;
            if (!(std::fabs(disp) < kSingleOverflow) || !(std::fabs(accel) < kSingleOverflow)) return false;
            dispOut[base + e] = f32(disp);
            accelOut[base + e] = f32(accel);
        }
    }
    return true;
}

// Equation numbers of every freedom of every node, node by node, checked
// once against the equation bounds so the block loops can index raw slots.
std::vector<i32> CollectEquations(RunState& s, i16 nodes) {
    std::vector<i32> eqs;
    if (nodes < 1) return eqs;
    eqs.reserve(std::size_t(nodes) * 6);
    for (i16 n = 1; n <= nodes; ++n) {
        for (int k = 1; k <= 6; ++k) {
            const i32 eq = s.Freq.NodeDof(n, k);
            if (eq < 0 || eq > s.Freq.NumDof) detail::FailSubscript(eq, s.Freq.NumDof);
            eqs.push_back(eq);
        }
    }
    return eqs;
}

// The accelerations of every node mode by mode, then their SRSS and absolute
// sums. The two sums are fixed here whatever the combination method, and
// the missing mass response stays out of them.
void WriteAccelFile(RunState& s, i16 d, i16 nodes, i16 first, i16 last, const std::vector<i32>& eqs) {
    const std::string path =
        s.Model.ModelPath + ".SEA-" + GeneralText(d) + ".O." + LTrim(s.Options.ResultsCase);
    PrintFile out(path, TextMode::Output);
    const std::int64_t stride = std::int64_t(s.Freq.NumDof) + 1;
    const f32* accel = s.ModalAccel.Data();

    std::vector<std::string> periods;
    if (nodes >= 1) {
        for (i16 m = first; m <= last; ++m) {
            (void)s.ModalAccel(0, m);  // the mode must exist
            periods.push_back(FormatField(ModePeriod(s.Freq.Omega(m)), "0.000", 8));
        }
    }

    out.Line(kAccelHeading);
    for (i16 n = 1; n <= nodes; ++n) {
        const i32* eq = eqs.data() + std::size_t(n - 1) * 6;
        for (i16 m = first; m <= last; ++m) {
            out.Item(PrintItem(n))
                .Tab(6)
                .Item(PrintItem(i32(m)))
                .Tab(11)
                .Item(periods[std::size_t(m - first)]);
            for (int k = 0; k < 6; ++k) {
                out.Item(FormatField(accel[m * stride + eq[k]], "0.000E-00", 11));
            }
            out.EndLine();
        }
    }

    out.Line(kCombHeading);
    for (i16 n = 1; n <= nodes; ++n) {
        const i32* eq = eqs.data() + std::size_t(n - 1) * 6;
        f32 accelSrss[7] = {};
        f32 accelAbs[7] = {};
        for (int k = 1; k <= 6; ++k) {
            // Running sums rounded to single on every addition.
            for (i16 m = first; m <= last; ++m) {
                const f64 a = accel[m * stride + eq[k - 1]];
                accelSrss[k] = StoreF32(accelSrss[k] + a * a);
                accelAbs[k] = StoreF32(accelAbs[k] + std::fabs(a));
            }
            accelSrss[k] = StoreF32(Sqrt(accelSrss[k]));
        }
        out.Item(PrintItem(n)).Tab(6).Item("SRSS").Tab(12);
        for (int k = 1; k <= 6; ++k) out.Item(FormatField(accelSrss[k], "0.000E-00", 11));
        // The SRSS line has no line end of its own: Tab(6) moves to the next.
        out.Tab(6).Item("ABS").Tab(12);
        for (int k = 1; k <= 6; ++k) out.Item(FormatField(accelAbs[k], "0.000E-00", 11));
        out.EndLine();
    }
    out.Close();
}

// A block of the .HS file holds, for every node and freedom, the equation
// number and values[equation]: the layout of the shape block of the
// frequency case. The equation numbers are the same in every block, so they
// are put in once and each block writes only its values.
std::vector<unsigned char> BlockWithEquations(const std::vector<i32>& eqs) {
    std::vector<unsigned char> block(eqs.size() * 8);
    for (std::size_t k = 0; k < eqs.size(); ++k) {
        StoreLittle(block.data() + 8 * k, std::bit_cast<std::uint32_t>(eqs[k]));
    }
    return block;
}

void WriteBlock(BinaryFile& file, std::vector<unsigned char>& block, const std::vector<i32>& eqs,
                const f32* values) {
    unsigned char* at = block.data() + 4;
    for (const i32 eq : eqs) {
        StoreLittle(at, std::bit_cast<std::uint32_t>(values[eq]));
        at += 8;
    }
    file.Write(block.data(), block.size());
}

// The modal response file: the hand-over of the uncombined modal
// displacements to the suite, with frequencies, damping and the method.
void WriteResponseFile(RunState& s, i16 d, i16 nodes, i16 first, i16 last, const std::vector<i32>& eqs) {
    BinaryFile file(s.Model.ModelPath + ".HS" + GeneralText(d));
    const bool single = s.Options.SingleMode != 0;
    const i32 rows = single ? 1 : AddI32(s.Freq.NumModes, s.MissMassRead);
    const i16 tableFirst = first;
    const i16 tableLast = single ? last : AddI16(s.Freq.NumModes, s.MissMassRead);

    std::vector<unsigned char> head;
    PutI16(head, nodes);
    PutI32(head, s.Freq.NumDof);
    PutI32(head, rows);
    PutF32(head, s.Options.DampingRatio);
    PutI16(head, s.Options.CombMethod);
    file.Write(head.data(), head.size());

    std::vector<unsigned char> table;
    for (i16 m = tableFirst; m <= tableLast; ++m) {
        PutF32(table, s.Freq.Omega(m));
        PutF32(table, s.ModalDamping(m));
    }
    file.Write(table.data(), table.size());

    std::vector<unsigned char> block = BlockWithEquations(eqs);
    const std::int64_t stride = std::int64_t(s.Freq.NumDof) + 1;
    for (i16 m = first; m <= last; ++m) {
        (void)s.ModalDisp(0, m);  // the mode must exist
        WriteBlock(file, block, eqs, s.ModalDisp.Data() + m * stride);
    }
    // The solved missing mass case as one more block; freedoms without an
    // equation carry what slot 0 absorbed when it was read.
    if (s.MissMassRead == 1) WriteBlock(file, block, eqs, s.MissMassDof.Data());
    file.Close();
}

}  // namespace

void ComputeModalResponse(RunState& s, i16 d) {
    // Node and mode counters are 16-bit in every file of the suite.
    const i16 modes = NarrowI16(s.Freq.NumModes);

    if (!ComputeResponsesFast(s, d, modes)) ComputeResponsesLiterally(s, d, modes);

    const i16 nodes = RoundToI16(s.Model.NumNodes);
    const i16 single = s.Options.SingleMode;
    const i16 first = single != 0 ? single : i16(1);
    const i16 last = single != 0 ? single : modes;
    const std::vector<i32> eqs = CollectEquations(s, nodes);

    if (s.Options.CreateAccelFile == 1) WriteAccelFile(s, d, nodes, first, last, eqs);
    WriteResponseFile(s, d, nodes, first, last, eqs);
}

}  // namespace tremodal
