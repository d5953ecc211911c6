#include "input/frequency_case.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "base/checked_math.h"
#include "base/host.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "base/worker_threads.h"
#include "input/modal_damping.h"

namespace tremodal {

namespace {

constexpr std::int64_t kHeaderLength = 40;
// One freedom in the shape block: an i32 equation and an f32 value.
constexpr std::int64_t kPairLength = 8;
constexpr std::int64_t kNodeBlockLength = 6 * kPairLength;
// Large blocks pass through a buffer of this size, so a model of hundreds of
// thousands of equations costs what the file costs to read and no more.
constexpr std::int64_t kBlockBuffer = 4 * 1024 * 1024;
// The loop counter over modes is 16 bits wide in the suite.
constexpr std::int64_t kMostModes = 32767;

const char* const kLumpedMassText = "Lumped Mass Model should be used for Seismic Response Analysis";
const char* const kJacobiText = "Ignore if Lumped Mass is set for 3-D Jacobi Eigen Solver";

// A file shorter than its counts make it: "/jobs/FRAME.H1: ends at byte
// 1,200 where its header promises 2,400". A promise of -1 is one too large
// for any file.
[[noreturn]] void FailShort(BinaryFile& file, std::int64_t promised, const char* promiser = "header") {
    const std::string promise = promised < 0 ? "more bytes than a file can hold" : GroupedDigits(promised);
    Fail(kInputPastEnd, file.Path() + ": ends at byte " + GroupedDigits(file.Size()) + " where its " +
                            promiser + " promises " + promise);
}

// Reads n bytes that the file must hold: a file that ends sooner is damaged.
void ReadExactly(BinaryFile& file, unsigned char* to, std::int64_t n, const char* promiser = "header") {
    if (n <= 0) return;
    const std::int64_t end = file.Position() - 1 + n;
    if (file.Read(to, static_cast<std::size_t>(n)) != static_cast<std::size_t>(n)) {
        FailShort(file, end, promiser);
    }
}

// a * b * c, or -1 when the product does not fit in 64 bits: a length no
// file can have.
std::int64_t BlockLength(std::int64_t a, std::int64_t b, std::int64_t c) {
    std::int64_t ab = 0;
    std::int64_t abc = 0;
    if (__builtin_mul_overflow(a, b, &ab) || __builtin_mul_overflow(ab, c, &abc)) return -1;
    return abc;
}

BinaryFile& OpenStream(RunState& state) {
    if (!state.Freq.Stream) Fail(kBadFileMode, "the frequency case file is not open");
    return *state.Freq.Stream;
}

void ShowMessage(RunState& state, const std::string& text) {
    if (state.Ui) state.Ui->ShowMessage(text, "TREMODAL");
}

// The eigenvalue list runs to the header's count or to the first value that
// is exactly 0.0, which is consumed with it; the slots the header announces
// behind the zero need not be in the file. Reads the list ahead of the
// allocation, so that a list which runs out of file before its count or its
// zero is found before any array is sized by the header. Returns the values
// before the zero; sets zeroFound when the list ended early.
std::vector<f64> ScanEigenvalues(BinaryFile& file, std::int64_t modes, bool& zeroFound) {
    std::vector<f64> values;
    zeroFound = false;
    std::vector<unsigned char> buffer;
    const std::int64_t listEnd = file.Position() - 1 + 8 * modes;
    std::int64_t left = modes;
    while (left > 0 && !zeroFound) {
        const std::int64_t take = std::min(left, kBlockBuffer / 8);
        buffer.resize(static_cast<std::size_t>(take * 8));
        const std::int64_t start = file.Position();
        const auto got = static_cast<std::int64_t>(file.Read(buffer.data(), buffer.size()));
        for (std::int64_t k = 0; k < got / 8; ++k) {
            const f64 value = GetF64(buffer.data() + 8 * k);
            if (value == 0.0) {
                zeroFound = true;
                // The shape block starts directly behind the zero.
                file.Seek(start + 8 * (k + 1));
                break;
            }
            values.push_back(value);
        }
        if (!zeroFound && got < take * 8) FailShort(file, listEnd);
        left -= take;
    }
    return values;
}

// Checks the header's counts against the file before anything is allocated
// by them: a damaged or foreign file must end in a failure, never in an
// allocation of gigabytes.
void CheckCaseSize(const RunState& state, BinaryFile& file, std::int64_t caseNodes, std::int64_t modesUsed) {
    // Shape block plus the mass form word.
    const std::int64_t shapeLength = BlockLength(modesUsed, caseNodes, kNodeBlockLength);
    const std::int64_t shapeEnd = shapeLength < 0 ? -1 : file.Position() - 1 + shapeLength + 4;
    if (shapeEnd < 0 || shapeEnd > file.Size()) FailShort(file, shapeEnd);
    // Node n of the case is node n of the model: the shape block would fail
    // at node NumNodes + 1 anyway. The equation count is bounded by nothing
    // in the file; what the arrays it sizes may take is checked when they
    // are allocated.
    const std::int64_t nodes = RoundToI32(state.Model.NumNodes);
    if (modesUsed > 0 && caseNodes > nodes) {
        Fail(kSubscriptOutOfRange, file.Path() + ": has " + GroupedDigits(caseNodes) +
                                       " nodes where the model has " + GroupedDigits(nodes));
    }
}

// One mode's part of the shape block decoded into its column, pair by pair:
// the equation comes first, and its value goes to the slot that this very
// number names; equation 0 collects the freedoms that have none, and no sum
// reads it. The largest magnitude goes to peak: it bounds the responses of
// the mode. Returns false at the first pair whose equation is out of range
// or whose value no single can hold (all exponent bits set), leaving it to
// FailAtBadPair to fail there.
bool DecodeMode(const unsigned char* block, std::int64_t pairs, std::int64_t lastEquation, f32* column,
                f32& peak) {
    std::uint32_t largest = 0;
    for (std::int64_t k = 0; k < pairs; ++k) {
        const unsigned char* at = block + k * kPairLength;
        const i32 equation = GetI32(at);
        const std::uint32_t bits = GetLittle<std::uint32_t>(at + 4);
        const std::uint32_t magnitude = bits & 0x7fffffffu;
        if (equation < 0 || equation > lastEquation || magnitude >= 0x7f800000u) return false;
        column[equation] = std::bit_cast<f32>(bits);
        // Finite singles order by magnitude as their bits do.
        largest = std::max(largest, magnitude);
    }
    peak = std::bit_cast<f32>(largest);
    return true;
}

// Fails at the first pair of a block that DecodeMode stops at: a bad
// equation number before its value, an infinity or a NaN as its store would.
[[noreturn]] void FailAtBadPair(const unsigned char* block, std::int64_t pairs, std::int64_t lastEquation) {
    for (std::int64_t k = 0; k < pairs; ++k) {
        const unsigned char* at = block + k * kPairLength;
        const i32 equation = GetI32(at);
        if (equation < 0 || equation > lastEquation) detail::FailSubscript(equation, lastEquation);
        const f32 value = GetF32(at + 4);
        if (!std::isfinite(value)) FailStoreF32(value);
    }
    Fail(kSubscriptOutOfRange, "a mode shape pair that cannot be read");
}

// The shape block: for every mode in use, every case node and its six
// freedoms, the equation number and the mode shape value of that freedom.
// The modes are read and decoded side by side, each thread a run of modes,
// straight from their places in the file. A block that cannot be had sends
// the read through the modes once more in order, a mode at a time, so the
// first bad pair in the file is the one that fails.
void ReadShapeBlock(RunState& state, BinaryFile& file, std::int64_t caseNodes) {
    FrequencyCase& f = state.Freq;
    if (f.NumModes < 1) return;
    const std::int64_t pairs = caseNodes * 6;
    const std::int64_t blockLength = pairs * kPairLength;
    const std::int64_t lastEquation = f.ModeShape.Upper1();
    const std::int64_t start = file.Position();
    // A thread takes at least a megabyte of the block.
    const std::int64_t leastModes =
        std::max<std::int64_t>(1, (1 << 20) / std::max<std::int64_t>(blockLength, 1));

    (void)f.ModeShape.Column(f.NumModes, lastEquation);
    (void)f.ShapePeak(f.NumModes);
    f32* shapes = f.ModeShape.Data();
    f32* peaks = f.ShapePeak.Data();
    const bool decoded = ForEachRange(1, f.NumModes, leastModes, [&](std::int64_t from, std::int64_t to) {
        std::vector<unsigned char> block(static_cast<std::size_t>(blockLength));
        for (std::int64_t m = from; m <= to; ++m) {
            const std::int64_t at = start + (m - 1) * blockLength;
            if (file.ReadBlockAt(block.data(), block.size(), at) != block.size()) return false;
            if (!DecodeMode(block.data(), pairs, lastEquation, shapes + m * (lastEquation + 1), peaks[m]))
                return false;
        }
        return true;
    });

    std::vector<unsigned char> block(static_cast<std::size_t>(blockLength));
    if (!decoded) {
        file.Seek(start);
        for (i32 m = 1; m <= f.NumModes; ++m) {
            ReadExactly(file, block.data(), blockLength);
            if (!DecodeMode(block.data(), pairs, lastEquation, f.ModeShape.Column(m, lastEquation),
                            f.ShapePeak(m)))
                FailAtBadPair(block.data(), pairs, lastEquation);
        }
    }
    // The map is repeated in every mode; the last mode's stands.
    file.Seek(start + (f.NumModes - 1) * blockLength);
    ReadExactly(file, block.data(), blockLength);
    for (std::int64_t k = 0; k < pairs; ++k) {
        f.NodeDof(k / 6 + 1, k % 6 + 1) = GetI32(block.data() + k * kPairLength);
    }
}

}  // namespace

void ReadFrequencyCase(RunState& state) {
    // The binary open would create a missing file, so a text open first is
    // what turns a missing frequency case into "file not found".
    const std::string path = state.Model.ModelPath + ".H" + LTrim(state.Options.FreqCase);
    TextInput probe(path);
    probe.Close();

    FrequencyCase& f = state.Freq;
    f.Stream = std::make_unique<BinaryFile>(path);
    BinaryFile& file = *f.Stream;

    unsigned char header[kHeaderLength];
    if (file.Size() < kHeaderLength) {
        Fail(kInputPastEnd, path + ": ends at byte " + GroupedDigits(file.Size()) + ", inside its " +
                                GroupedDigits(kHeaderLength) + "-byte header");
    }
    ReadExactly(file, header, kHeaderLength);
    const i32 caseNodes = GetI32(header);
    f.NumDof = GetI32(header + 4);
    f.NumModes = GetI32(header + 8);
    // The word at offset 12 means nothing here. Of the direction masses only
    // the first, the load case mass, is ever used; the others are kept as the
    // solver wrote them.
    f.DirMass(1) = StoreF32(GetF32(header + 16));
    for (int k = 2; k <= 6; ++k) f.DirMass(k) = GetF32(header + 16 + 4 * (k - 1));

    if (caseNodes < 0 || f.NumDof < 0 || f.NumModes < 0) {
        Fail(kSubscriptOutOfRange, path + ": its header holds a negative count (nodes " +
                                       GroupedDigits(caseNodes) + ", equations " + GroupedDigits(f.NumDof) +
                                       ", modes " + GroupedDigits(f.NumModes) + ")");
    }
    bool zeroFound = false;
    const std::vector<f64> eigenvalues = ScanEigenvalues(file, f.NumModes, zeroFound);
    const auto modesUsed = static_cast<std::int64_t>(eigenvalues.size());
    CheckCaseSize(state, file, caseNodes, modesUsed);

    // Sized by the header; the sizes stay when the mode count is lowered.
    AllocateRunArrays(state);
    if (zeroFound) f.NumModes = static_cast<i32>(modesUsed);
    for (i32 m = 1; m <= f.NumModes; ++m) {
        const f64 value = eigenvalues[static_cast<std::size_t>(m - 1)];
        f.Eigenvalue(m) = StoreF32(value);
        // From the file's double, not from the rounded eigenvalue: the two
        // differ in the last bits of a single.
        f.Omega(m) = StoreF32(Sqrt(value));
    }

    if (state.Options.ZpaHighestMode == 1) state.Curve.ZpaValue = 1.0f;

    if (f.NumModes > kMostModes)
        Fail(kOverflow, path + ": holds " + GroupedDigits(f.NumModes) + " modes, more than 32,767");
    try {
        ReadShapeBlock(state, file, caseNodes);
    } catch (const Failure& failure) {
        // A bad equation number or value: the file is what is wrong.
        Fail(failure.Number(), path + ": in its mode shapes, " + failure.what());
    }

    unsigned char form[4];
    ReadExactly(file, form, 4);
    f.MassForm = GetI32(form);
    f.MassFormRead = f.MassForm;
    if (f.MassForm == 2) {
        // Value 2 carries a lumped block as well; it is read as one, with a
        // word to the user, also in a batch run.
        f.MassForm = 1;
        ShowMessage(state, kLumpedMassText);
    }
    if (state.BatchRun == 0 && f.MassForm == 0) {
        ShowMessage(state, std::string(kLumpedMassText) + "\n" + kJacobiText);
    }

    ReadModalDamping(state);
}

void ReadMassMatrix(RunState& state) {
    FrequencyCase& f = state.Freq;
    BinaryFile& file = OpenStream(state);
    const std::int64_t dof = f.NumDof;
    // A word the solver writes before the matrix; it plays no part.
    const std::int64_t blockLength = BlockLength(dof, dof, 8);
    const std::int64_t blockEnd = blockLength < 0 ? -1 : file.Position() - 1 + 4 + blockLength;
    if (blockEnd < 0 || blockEnd > file.Size()) FailShort(file, blockEnd);
    unsigned char word[4];
    ReadExactly(file, word, 4);

    // Only the diagonal M(i, i) enters a result, so only the diagonal is
    // kept and only the diagonal is read: term (j, i) stands at
    // ((i - 1) * NumDof + (j - 1)) * 8 behind the block start. The terms off
    // the diagonal are passed over, never held, so the memory does not grow
    // with the square of the number of equations.
    const std::int64_t start = file.Position();
    f.MassTerms.Allocate(dof);
    for (std::int64_t i = 1; i <= dof; ++i) {
        file.Seek(start + ((i - 1) * dof + (i - 1)) * 8);
        unsigned char value[8];
        ReadExactly(file, value, 8);
        f.MassTerms(i) = StoreF32(GetF64(value));
    }
    file.Seek(start + blockLength);
}

void ReadMassVector(RunState& state) {
    FrequencyCase& f = state.Freq;
    BinaryFile& file = OpenStream(state);
    unsigned char word[4];
    ReadExactly(file, word, 4);
    f.MassCount = GetI32(word);
    if (f.MassCount < 0) {
        Fail(kSubscriptOutOfRange,
             file.Path() + ": its mass count is negative (" + GroupedDigits(f.MassCount) + ")");
    }
    const std::int64_t count = f.MassCount;
    const std::int64_t vectorEnd = file.Position() - 1 + count * 8;
    if (vectorEnd > file.Size()) FailShort(file, vectorEnd, "mass count");
    f.MassTerms.Allocate(count);

    std::vector<unsigned char> buffer;
    std::int64_t done = 0;
    while (done < count) {
        const std::int64_t take = std::min(count - done, kBlockBuffer / 8);
        buffer.resize(static_cast<std::size_t>(take * 8));
        ReadExactly(file, buffer.data(), take * 8, "mass count");
        for (std::int64_t k = 0; k < take; ++k) {
            f.MassTerms(done + k + 1) = StoreF32(GetF64(buffer.data() + 8 * k));
        }
        done += take;
    }
}

}  // namespace tremodal
