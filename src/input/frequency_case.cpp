#include "input/frequency_case.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <vector>

#include "input/modal_damping.h"
#include "runcontrol/checked_math.h"
#include "runcontrol/host.h"
#include "runcontrol/number_text.h"
#include "runcontrol/text_files.h"

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

[[noreturn]] void FailShort(const std::string& what) {
    Fail(kInputPastEnd, "frequency case file ends inside the " + what);
}

// Reads n bytes that the file must hold: a file that ends sooner is damaged.
void ReadExactly(BinaryFile& file, unsigned char* to, std::int64_t n, const std::string& what) {
    if (n <= 0) return;
    if (file.Read(to, static_cast<std::size_t>(n)) != static_cast<std::size_t>(n)) FailShort(what);
}

// Bytes that stand in the file from the read position on.
std::int64_t BytesLeft(BinaryFile& file) {
    return std::max<std::int64_t>(0, file.Size() - (file.Position() - 1));
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
        if (!zeroFound && got < take * 8) FailShort("eigenvalues");
        left -= take;
    }
    return values;
}

// Checks the header's counts against the file before anything is allocated
// by them: a damaged or foreign file must end in a failure, never in an
// allocation of gigabytes.
void CheckCaseSize(const RunState& state, std::int64_t caseNodes, std::int64_t modesUsed,
                   std::int64_t bytesBehindEigenvalues) {
    // Shape block plus the mass form word.
    const std::int64_t shapeLength = BlockLength(modesUsed, caseNodes, kNodeBlockLength);
    if (shapeLength < 0 || shapeLength > bytesBehindEigenvalues - 4) FailShort("shape block");
    // Node n of the case is node n of the model: the shape block would fail
    // at node NumNodes + 1 anyway. The equation count is bounded by nothing
    // in the file; what the arrays it sizes may take is checked when they
    // are allocated.
    if (modesUsed > 0 && caseNodes > RoundToI32(state.Model.NumNodes)) {
        Fail(kSubscriptOutOfRange, "frequency case has more nodes than the model");
    }
}

// The shape block: for every mode in use, every case node and its six
// freedoms, the equation number and the mode shape value of that freedom.
// Read a mode at a time and decoded from memory. Each mode's largest
// magnitude is kept on the way: it bounds the responses of the mode.
void ReadShapeBlock(RunState& state, BinaryFile& file, std::int64_t caseNodes) {
    FrequencyCase& f = state.Freq;
    if (f.NumModes < 1) return;
    const std::int64_t pairs = caseNodes * 6;
    const std::int64_t lastEquation = f.ModeShape.Upper1();
    std::vector<unsigned char> block(static_cast<std::size_t>(pairs * kPairLength));
    for (i32 m = 1; m <= f.NumModes; ++m) {
        ReadExactly(file, block.data(), pairs * kPairLength, "shape block");
        f32* column = f.ModeShape.Column(m, lastEquation);
        std::uint32_t peak = 0;
        for (std::int64_t k = 0; k < pairs; ++k) {
            // The equation comes first, and its value goes to the slot that
            // this very number names; equation 0 collects the freedoms that
            // have none, and no sum reads it.
            const unsigned char* at = block.data() + k * kPairLength;
            const i32 equation = GetI32(at);
            if (equation < 0 || equation > lastEquation) detail::FailSubscript(equation, lastEquation);
            const std::uint32_t bits = GetLittle<std::uint32_t>(at + 4);
            const std::uint32_t magnitude = bits & 0x7fffffffu;
            // An infinity or a NaN (all exponent bits set) fails as its store would.
            if (magnitude >= 0x7f800000u) FailStoreF32(std::bit_cast<f32>(bits));
            column[equation] = std::bit_cast<f32>(bits);
            // Finite singles order by magnitude as their bits do.
            peak = std::max(peak, magnitude);
        }
        f.ShapePeak(m) = std::bit_cast<f32>(peak);
    }
    // The map is repeated in every mode; the last mode's stands.
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
    ReadExactly(file, header, kHeaderLength, "header");
    const i32 caseNodes = GetI32(header);
    f.NumDof = GetI32(header + 4);
    f.NumModes = GetI32(header + 8);
    // The word at offset 12 means nothing here. Of the direction masses only
    // the first, the load case mass, is ever used; the others are kept as the
    // solver wrote them.
    f.DirMass(1) = StoreF32(GetF32(header + 16));
    for (int k = 2; k <= 6; ++k) f.DirMass(k) = GetF32(header + 16 + 4 * (k - 1));

    if (caseNodes < 0 || f.NumDof < 0 || f.NumModes < 0) {
        Fail(kSubscriptOutOfRange, "negative count in the frequency case header");
    }
    bool zeroFound = false;
    const std::vector<f64> eigenvalues = ScanEigenvalues(file, f.NumModes, zeroFound);
    const auto modesUsed = static_cast<std::int64_t>(eigenvalues.size());
    CheckCaseSize(state, caseNodes, modesUsed, BytesLeft(file));

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

    if (f.NumModes > kMostModes) Fail(kOverflow, "more than 32767 modes");
    ReadShapeBlock(state, file, caseNodes);

    unsigned char form[4];
    ReadExactly(file, form, 4, "mass form");
    f.MassForm = GetI32(form);
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
    if (blockLength < 0 || blockLength > BytesLeft(file) - 4) FailShort("mass matrix");
    unsigned char word[4];
    ReadExactly(file, word, 4, "mass matrix");

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
        ReadExactly(file, value, 8, "mass matrix");
        f.MassTerms(i) = StoreF32(GetF64(value));
    }
    file.Seek(start + blockLength);
}

void ReadMassVector(RunState& state) {
    FrequencyCase& f = state.Freq;
    BinaryFile& file = OpenStream(state);
    unsigned char word[4];
    ReadExactly(file, word, 4, "mass vector");
    f.MassCount = GetI32(word);
    if (f.MassCount < 0) Fail(kSubscriptOutOfRange, "negative mass count");
    const std::int64_t count = f.MassCount;
    if (count * 8 > BytesLeft(file)) FailShort("mass vector");
    f.MassTerms.Allocate(count);

    std::vector<unsigned char> buffer;
    std::int64_t done = 0;
    while (done < count) {
        const std::int64_t take = std::min(count - done, kBlockBuffer / 8);
        buffer.resize(static_cast<std::size_t>(take * 8));
        ReadExactly(file, buffer.data(), take * 8, "mass vector");
        for (std::int64_t k = 0; k < take; ++k) {
            f.MassTerms(done + k + 1) = StoreF32(GetF64(buffer.data() + 8 * k));
        }
        done += take;
    }
}

}  // namespace tremodal
