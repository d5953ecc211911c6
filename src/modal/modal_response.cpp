#include "modal/modal_response.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "base/checked_math.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "base/wide_registers.h"
#include "base/worker_threads.h"
#include "modal/response_curve.h"

namespace tremodal {

namespace {

constexpr f64 kPi = 3.14159265358979;
// Rotational excitation of a mode shorter than this period is scaled up by
// 2 pi / 0.4: the rocking input of short-period modes follows the ground
// acceleration rather than the displacement.
constexpr f32 kRotationPeriod = 0.4f;
// Work is shared out among threads in runs of at least this many values.
constexpr std::int64_t kLeastValues = 1 << 16;

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

// S(m) x Gamma(m) x c(m), the left part of the response product of mode m,
// multiplied in that order. Times ModeShape(e, m) it is the displacement of
// equation e, and times omega twice more the acceleration.
f64 ResponseScale(RunState& s, i16 d, i32 m) {
    return f64(s.Curve.ModalSpectrum(m)) * s.Participation(m) * DirectionScale(s, d, m);
}

// The responses of equations first..last in every mode, equation by
// equation and mode by mode, every store checked: fails where that order
// meets the first fault, and otherwise only tells that there is none.
void CheckResponses(RunState& s, i16 d, i16 modes, i32 first, i32 last) {
    for (i32 e = first; e <= last; ++e) {
        for (i32 m = 1; m <= modes; ++m) {
            const f64 disp = ResponseScale(s, d, m) * s.Freq.ModeShape(e, m);
            StoreF32(disp);
            const f64 omega = s.Freq.Omega(m);
            StoreF32(disp * omega * omega);
        }
    }
}

// Whether no response of any equation can overflow a single. The rounded
// products grow with |ModeShape|, so a mode's largest value bounds them all.
bool ResponsesFit(RunState& s, const std::vector<f64>& scale, i16 modes) {
    for (i32 m = 1; m <= modes; ++m) {
        const f64 disp = std::fabs(scale[std::size_t(m)]) * s.Freq.ShapePeak(m);
        const f64 omega = s.Freq.Omega(m);
        if (!(disp < kSingleOverflow) || !(disp * omega * omega < kSingleOverflow)) return false;
    }
    return true;
}

// The responses of every equation in every mode are worked out before any
// file is written, and a numeric fault stops the direction there. The first
// equation is worked in full, which also fails on a direction scale that
// cannot be had; the others are vouched for by each mode's largest shape
// value, or, where that bound is too coarse, worked in full as well. The
// files then work out each value again from the same product.
std::vector<f64> ResponseScales(RunState& s, i16 d, i16 modes) {
    std::vector<f64> scale(std::size_t(modes < 0 ? 0 : modes) + 1, 0.0);
    const i32 dof = s.Freq.NumDof;
    if (dof < 1) return scale;
    CheckResponses(s, d, modes, 1, 1);
    for (i32 m = 1; m <= modes; ++m) scale[std::size_t(m)] = ResponseScale(s, d, m);
    if (!ResponsesFit(s, scale, modes)) CheckResponses(s, d, modes, 2, dof);
    return scale;
}

// The accelerations of every equation in every mode, for the accelerations
// file, which lists them node by node across the modes. Equation 0 keeps
// the zeros of the allocation.
void FillModalAccel(RunState& s, const std::vector<f64>& scale, i16 modes) {
    const i32 dof = s.Freq.NumDof;
    if (modes < 1) return;
    (void)s.Freq.ModeShape.Column(modes, dof);
    (void)s.ModalAccel.Column(modes, dof);
    const f32* shapes = s.Freq.ModeShape.Data();
    f32* accels = s.ModalAccel.Data();
    const std::int64_t stride = std::int64_t(dof) + 1;
    // Each thread a run of modes.
    ForEachRange(1, modes, std::max<std::int64_t>(1, kLeastValues / stride),
                 [&](std::int64_t from, std::int64_t to) {
                     for (std::int64_t m = from; m <= to; ++m) {
                         const f32* shape = shapes + m * stride;
                         f32* accel = accels + m * stride;
                         const f64 omega = s.Freq.Omega.Data()[m];
                         for (i32 e = 1; e <= dof; ++e)
                             accel[e] = RoundToSingle(scale[std::size_t(m)] * shape[e] * omega * omega);
                     }
                     return true;
                 });
}

// Equation numbers of every freedom of every node, node by node, checked
// once against the equation bounds so the block loops can index raw slots.
std::vector<i32> CollectEquations(RunState& s, i16 nodes) {
    std::vector<i32> eqs;
    if (nodes < 1) return eqs;
    eqs.reserve(std::size_t(nodes) * 6);
    for (i32 n = 1; n <= nodes; ++n) {
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
        for (i32 m = first; m <= last; ++m) {
            (void)s.ModalAccel(0, m);  // the mode must exist
            periods.push_back(FormatField(ModePeriod(s.Freq.Omega(m)), "0.000", 8));
        }
    }

    out.Line(kAccelHeading);
    for (i32 n = 1; n <= nodes; ++n) {
        const i32* eq = eqs.data() + std::size_t(n - 1) * 6;
        for (i32 m = first; m <= last; ++m) {
            out.Item(PrintItem(i16(n)))
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
    for (i32 n = 1; n <= nodes; ++n) {
        const i32* eq = eqs.data() + std::size_t(n - 1) * 6;
        f32 accelSrss[7] = {};
        f32 accelAbs[7] = {};
        for (int k = 1; k <= 6; ++k) {
            // Running sums rounded to single on every addition.
            for (i32 m = first; m <= last; ++m) {
                const f64 a = accel[m * stride + eq[k - 1]];
                accelSrss[k] = StoreF32(accelSrss[k] + a * a);
                accelAbs[k] = StoreF32(accelAbs[k] + std::fabs(a));
            }
            accelSrss[k] = StoreF32(Sqrt(accelSrss[k]));
        }
        out.Item(PrintItem(i16(n))).Tab(6).Item("SRSS").Tab(12);
        for (int k = 1; k <= 6; ++k) out.Item(FormatField(accelSrss[k], "0.000E-00", 11));
        // The SRSS line has no line end of its own: Tab(6) moves to the next.
        out.Tab(6).Item("ABS").Tab(12);
        for (int k = 1; k <= 6; ++k) out.Item(FormatField(accelAbs[k], "0.000E-00", 11));
        out.EndLine();
    }
    out.Close();
}

// A block of the .HS file holds, for every node and freedom, the equation
// number and the value of that equation: the layout of the shape block of
// the frequency case.
template <class ValueOf>
void FillBlock(unsigned char* block, const std::vector<i32>& eqs, ValueOf valueOf) {
    for (std::size_t k = 0; k < eqs.size(); ++k) {
        StoreLittle(block + 8 * k, std::bit_cast<std::uint32_t>(eqs[k]));
        StoreLittle(block + 8 * k + 4, std::bit_cast<std::uint32_t>(f32(valueOf(eqs[k]))));
    }
}

// The block of a mode's displacements: scale x shape(eq) for every freedom,
// 0 where a freedom has no equation.
void FillScaledOne(unsigned char* block, std::size_t k, i32 eq, const f32* shape, f64 scale) {
    StoreLittle(block + 8 * k, std::bit_cast<std::uint32_t>(eq));
    const f32 value = eq == 0 ? 0.0f : RoundToSingle(scale * shape[eq]);
    StoreLittle(block + 8 * k + 4, std::bit_cast<std::uint32_t>(value));
}

#if TREMODAL_WIDE_REGISTERS
// Eight freedoms at a time where their equations run on one after another,
// as they do for most of the freedoms of a model: the shape values lie side
// by side and go through the same double product and rounding as one at a
// time. Returns how many freedoms it did.
TREMODAL_WIDE std::size_t FillScaledWide(unsigned char* block, const i32* eqs, std::size_t count,
                                         const f32* shape, f64 scale) {
    const __m256d factor = _mm256_set1_pd(scale);
    const __m256i steps = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
    std::size_t k = 0;
    for (; k + 8 <= count; k += 8) {
        const __m256i e = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(eqs + k));
        const __m256i run = _mm256_add_epi32(_mm256_set1_epi32(eqs[k]), steps);
        if (eqs[k] <= 0 || _mm256_movemask_epi8(_mm256_cmpeq_epi32(e, run)) != -1) {
            for (std::size_t j = k; j < k + 8; ++j) FillScaledOne(block, j, eqs[j], shape, scale);
            continue;
        }
        const __m256 v = _mm256_loadu_ps(shape + eqs[k]);
        const __m128 low = _mm256_cvtpd_ps(_mm256_mul_pd(factor, _mm256_cvtps_pd(_mm256_castps256_ps128(v))));
        const __m128 high =
            _mm256_cvtpd_ps(_mm256_mul_pd(factor, _mm256_cvtps_pd(_mm256_extractf128_ps(v, 1))));
        const __m256 values = _mm256_set_m128(high, low);
        const __m256 equations = _mm256_castsi256_ps(e);
        const __m256 a = _mm256_unpacklo_ps(equations, values);  // e0 v0 e1 v1 | e4 v4 e5 v5
        const __m256 b = _mm256_unpackhi_ps(equations, values);  // e2 v2 e3 v3 | e6 v6 e7 v7
        _mm256_storeu_ps(reinterpret_cast<float*>(block + 8 * k), _mm256_permute2f128_ps(a, b, 0x20));
        _mm256_storeu_ps(reinterpret_cast<float*>(block + 8 * k + 32), _mm256_permute2f128_ps(a, b, 0x31));
    }
    return k;
}
#endif

void FillScaledBlock(unsigned char* block, const std::vector<i32>& eqs, const f32* shape, f64 scale) {
    std::size_t k = 0;
#if TREMODAL_WIDE_REGISTERS
    if (HasWideRegisters() && std::endian::native == std::endian::little)
        k = FillScaledWide(block, eqs.data(), eqs.size(), shape, scale);
#endif
    for (; k < eqs.size(); ++k) FillScaledOne(block, k, eqs[k], shape, scale);
}

// Blocks go to the file in batches of about this many bytes.
constexpr std::size_t kBatchBytes = 1024 * 1024;

// The blocks of modes first..last, `fillMode(m, block)` filling the block of
// mode m. Workers fill batches of whole blocks ahead while the calling
// thread writes them in mode order.
template <class FillMode>
void WriteModeBlocks(BinaryFile& file, std::size_t blockBytes, i32 first, i32 last, FillMode fillMode) {
    if (last < first) return;
    const i32 perBatch = i32(std::clamp<std::size_t>(kBatchBytes / std::max<std::size_t>(blockBytes, 1), 1,
                                                     std::size_t(last - first + 1)));
    const i32 batches = (last - first) / perBatch + 1;
    auto modesOf = [&](i32 batch) { return std::min(perBatch, last - first + 1 - batch * perBatch); };
    ForEachRowInOrder<unsigned char>(
        0, batches - 1, blockBytes * std::size_t(perBatch),
        [&] {
            return [&](i32 batch, unsigned char* bytes) {
                const i32 m0 = first + batch * perBatch;
                for (i32 k = 0; k < modesOf(batch); ++k)
                    fillMode(m0 + k, bytes + blockBytes * std::size_t(k));
                return true;
            };
        },
        [&](i32 batch, const unsigned char* bytes, bool) {
            file.Write(bytes, blockBytes * std::size_t(modesOf(batch)));
        });
}

// The modal response file: the hand-over of the uncombined modal
// displacements to the suite, with frequencies, damping and the method.
void WriteResponseFile(RunState& s, i16 d, i16 nodes, i16 first, i16 last, const std::vector<i32>& eqs,
                       const std::vector<f64>& scales) {
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
    for (i32 m = tableFirst; m <= tableLast; ++m) {
        PutF32(table, s.Freq.Omega(m));
        PutF32(table, s.ModalDamping(m));
    }
    file.Write(table.data(), table.size());

    // The displacements of each mode; a freedom without an equation has none.
    const i32 dof = s.Freq.NumDof;
    (void)s.Freq.ModeShape.Column(last, dof);
    const f32* shapes = s.Freq.ModeShape.Data();
    WriteModeBlocks(file, eqs.size() * 8, first, last, [&](i32 m, unsigned char* block) {
        FillScaledBlock(block, eqs, shapes + std::int64_t(m) * (dof + 1), scales[std::size_t(m)]);
    });
    // The solved missing mass case as one more block; freedoms without an
    // equation carry what slot 0 absorbed when it was read.
    if (s.MissMassRead == 1) {
        (void)s.MissMassDof(s.Freq.NumDof);
        const f32* missMass = s.MissMassDof.Data();
        std::vector<unsigned char> block(eqs.size() * 8);
        FillBlock(block.data(), eqs, [&](i32 eq) { return missMass[eq]; });
        file.Write(block.data(), block.size());
    }
    file.Close();
}

}  // namespace

void ComputeModalResponse(RunState& s, i16 d) {
    // Node and mode counters are 16-bit in every file of the suite.
    const i16 modes = NarrowI16(s.Freq.NumModes);
    const std::vector<f64> scales = ResponseScales(s, d, modes);

    const i16 nodes = RoundToI16(s.Model.NumNodes);
    const i16 single = s.Options.SingleMode;
    const i16 first = single != 0 ? single : i16(1);
    const i16 last = single != 0 ? single : modes;
    const std::vector<i32> eqs = CollectEquations(s, nodes);

    if (s.Options.CreateAccelFile == 1) {
        FillModalAccel(s, scales, modes);
        if (s.WriteFiles) WriteAccelFile(s, d, nodes, first, last, eqs);
    }
    if (s.WriteFiles) WriteResponseFile(s, d, nodes, first, last, eqs, scales);
}

}  // namespace tremodal
