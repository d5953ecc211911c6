#include "input/frequency_case.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "base/worker_threads.h"
#include "support/test_support.h"
#include "tools/frequency_case_writer.h"

namespace tremodal {
namespace {

using example::FrequencyCaseBytes;
using example::FrequencyCaseData;
using testing::BytesF32;
using testing::BytesF64;
using testing::BytesI32;
using testing::FailureOf;
using testing::MessageOf;

const char* const kLumpedText = "Lumped Mass Model should be used for Seismic Response Analysis";
const char* const kSquareText =
    "Lumped Mass Model should be used for Seismic Response Analysis\n"
    "Ignore if Lumped Mass is set for 3-D Jacobi Eigen Solver";

struct CaseFixture {
    testing::TempDir dir;
    testing::FakeHost host;
    RunState state;
    explicit CaseFixture(float nodes = 2) {
        state.Model.ModelPath = dir.File("FRAME");
        state.Model.NumNodes = nodes;
        state.Options.FreqCase = " 1";
        state.Options.DampingRatio = 0.05f;
        state.Ui = &host;
    }
    void Write(const std::string& bytes) { testing::WriteFile(dir.File("FRAME.H1"), bytes); }
    // The reads of a run up to the end of the mass block, as the driver
    // makes them.
    void ReadAll() {
        ReadFrequencyCase(state);
        if (state.Freq.MassForm == 0) ReadMassMatrix(state);
        if (state.Freq.MassForm == 1) ReadMassVector(state);
    }
    std::int64_t Position() { return state.Freq.Stream->Position() - 1; }
};

// Two case nodes, three modes, six equations; node 2 has no freedom with an
// equation. Mode 2's largest value is negative.
FrequencyCaseData TwoNodeCase() {
    FrequencyCaseData c;
    c.CaseNodes = 2;
    c.NumDof = 6;
    c.DirMass = {12.5f, 1, 2, 3, 4, 5};
    c.Eigenvalues = {39.5, 412.25, 1000.001};
    c.NodeDof = {{1, 2, 3, 4, 5, 6}, {0, 0, 0, 0, 0, 0}};
    c.Shapes = {{0, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f},
                {0, 1.5f, -2.5f, 3.5f, -4.5f, 5.5f, -6.5f},
                {0, 7, 8, 9, 10, 11, 12}};
    c.MassForm = 1;
    c.Masses = {1.25, 2.5, 3.75, 5, 6.25, 7.1};
    return c;
}

void Patch(std::string& bytes, std::size_t at, const std::string& with) {
    bytes.replace(at, with.size(), with);
}

TEST(FrequencyCase, MassFormDecidesTheBlockAndTheMessage) {
    // Square form in the dialog: the two-line message; only the diagonal is
    // kept, and the terms off it are passed over even when damaged. Value 2
    // is read as lumped and tells the user, in a batch run too.
    const struct {
        std::int32_t form;
        i16 batch;
        const char* message;
        std::int32_t read;
        f32 sixth;
    } forms[] = {{0, 0, kSquareText, 0, 0.1f}, {2, 1, kLumpedText, 1, 7.1f}};
    for (const auto& form : forms) {
        CaseFixture f;
        FrequencyCaseData c = TwoNodeCase();
        c.MassForm = form.form;
        if (form.form == 0) c.Masses = {1.5, 2.5, 3.5, 4.5, 5.5, 0.1};
        c.OffDiagonal = std::numeric_limits<double>::quiet_NaN();
        const std::string bytes = FrequencyCaseBytes(c);
        f.Write(bytes);
        f.state.BatchRun = form.batch;
        f.ReadAll();
        EXPECT_EQ(f.host.Messages, std::vector<std::string>{form.message});
        EXPECT_EQ(f.host.MessageTitles, std::vector<std::string>{"TREMODAL"});
        EXPECT_EQ(f.state.Freq.MassForm, form.read);
        EXPECT_EQ(f.state.Freq.MassTerms.Upper(), 6);
        EXPECT_EQ(f.state.Freq.MassTerms(1), form.form == 0 ? 1.5f : 1.25f);
        EXPECT_EQ(f.state.Freq.MassTerms(6), form.sixth);
        EXPECT_EQ(f.Position(), std::int64_t(bytes.size()));
    }
}

TEST(FrequencyCase, FileEndingInAnySectionIsInputPastEnd) {
    FrequencyCaseData lumped = TwoNodeCase();
    FrequencyCaseData square = TwoNodeCase();
    square.MassForm = 0;
    const std::string lumpedBytes = FrequencyCaseBytes(lumped);
    const std::string squareBytes = FrequencyCaseBytes(square);
    // Header, eigenvalues, shape block, mass form, mass count, masses; the
    // discarded word and the last term of the square block.
    const std::pair<const std::string*, std::size_t> cuts[] = {
        {&lumpedBytes, 0},
        {&lumpedBytes, 39},
        {&lumpedBytes, 63},
        {&lumpedBytes, 64},
        {&lumpedBytes, 351},
        {&lumpedBytes, 355},
        {&lumpedBytes, 359},
        {&lumpedBytes, lumpedBytes.size() - 1},
        {&squareBytes, 357},
        {&squareBytes, 360},
        {&squareBytes, squareBytes.size() - 1},
    };
    for (const auto& [bytes, length] : cuts) {
        CaseFixture f;
        f.Write(bytes->substr(0, length));
        EXPECT_EQ(FailureOf([&] { f.ReadAll(); }), kInputPastEnd) << "cut at " << length;
    }
    // Cut before the shapes: nothing was allocated.
    CaseFixture f;
    f.Write(lumpedBytes.substr(0, 351));
    EXPECT_EQ(FailureOf([&] { f.ReadAll(); }), kInputPastEnd);
    EXPECT_EQ(f.state.Freq.ModeShape.Upper1(), -1);
    EXPECT_EQ(f.state.Freq.Eigenvalue.Upper(), -1);
}

TEST(FrequencyCase, ZeroEigenvalueEndsTheListWithoutTheSlotsBehindIt) {
    // Ten modes announced, the third eigenvalue is the zero: the shape block
    // of two modes follows the zero directly and the file ends with the mass
    // block. The arrays keep room for the ten announced modes.
    CaseFixture f;
    FrequencyCaseData c = TwoNodeCase();
    c.Modes = 10;
    c.Eigenvalues = {39.5, 412.25, 0.0};
    c.Shapes.resize(2);
    const std::string bytes = FrequencyCaseBytes(c);
    ASSERT_EQ(bytes.size(), 40u + 3 * 8 + 2 * 2 * 48 + 4 + 4 + 6 * 8);
    f.Write(bytes);
    f.ReadAll();
    const FrequencyCase& r = f.state.Freq;
    EXPECT_EQ(r.NumModes, 2);
    EXPECT_EQ(r.Eigenvalue.Upper(), 10);
    EXPECT_EQ(r.ModeShape.Upper2(), 10);
    EXPECT_EQ(r.ModeShape(3, 2), 3.5f);
    EXPECT_EQ(r.MassTerms(6), 7.1f);
    EXPECT_EQ(f.Position(), static_cast<std::int64_t>(bytes.size()));

    // Equations are not tied to the case nodes: 40 equations, two nodes.
    CaseFixture g;
    c.NumDof = 40;
    c.Masses.resize(40, 1.0);
    g.Write(FrequencyCaseBytes(c));
    g.ReadAll();
    EXPECT_EQ(g.state.Freq.NumDof, 40);
    EXPECT_EQ(g.state.Freq.MassTerms(40), 1.0f);

    // No mode at all: the equation count stands by itself.
    CaseFixture h;
    h.Write(BytesI32(0) + BytesI32(13) + BytesI32(1) + std::string(28, '\0') + BytesF64(0) + BytesI32(1) +
            BytesI32(0));
    h.ReadAll();
    EXPECT_EQ(h.state.Freq.NumModes, 0);
    EXPECT_EQ(h.state.Freq.NumDof, 13);
    EXPECT_EQ(h.state.Excitation.Upper(), 13);
}

TEST(FrequencyCase, AbsurdHeadersFailBeforeAnyAllocation) {
    // What the machine can give is set low, so that the test does not depend
    // on the memory of the machine it runs on.
    struct Budget {
        std::int64_t old = MemoryBudget();
        Budget() { SetMemoryBudget(std::int64_t(1) << 30); }
        ~Budget() { SetMemoryBudget(old); }
    } budget;
    // Unused word and direction masses, one eigenvalue, 52 bytes to the end.
    const std::string body = std::string(28, '\0') + BytesF64(100) + std::string(52, '\0');
    struct Header {
        std::int32_t caseNodes, dof, modes;
        int failure;
    };
    const Header headers[] = {
        {1, 2000000000, 1, kOutOfMemory},   // arrays of 16 GB
        {0, 6, 2000000000, kOutOfMemory},   // a zero ends the list, the arrays keep its count
        {1, 6, 3, kInputPastEnd},           // the zero leaves one mode, whose shapes overrun the file
        {2000000000, 6, 1, kInputPastEnd},  // shape block beyond the file
        {-1, 6, 1, kSubscriptOutOfRange},  {1, -6, 1, kSubscriptOutOfRange}, {1, 6, -1, kSubscriptOutOfRange},
        {5, 6, 1, kInputPastEnd},  // five node blocks cannot stand in 56 bytes
    };
    for (const Header& h : headers) {
        CaseFixture f;
        const std::string bytes = BytesI32(h.caseNodes) + BytesI32(h.dof) + BytesI32(h.modes) + body;
        ASSERT_EQ(bytes.size(), 100u);
        f.Write(bytes);
        EXPECT_EQ(FailureOf([&] { ReadFrequencyCase(f.state); }), h.failure)
            << h.caseNodes << " " << h.dof << " " << h.modes;
        EXPECT_EQ(f.state.Freq.ModeShape.Upper1(), -1);
        EXPECT_EQ(f.state.ModalAccel.Upper1(), -1);
    }
    {
        // A list with neither its count nor a zero in the file.
        CaseFixture f;
        f.Write(BytesI32(1) + BytesI32(6) + BytesI32(4) + std::string(28, '\0') + BytesF64(100) +
                BytesF64(200));
        EXPECT_EQ(FailureOf([&] { ReadFrequencyCase(f.state); }), kInputPastEnd);
        EXPECT_EQ(f.state.Freq.ModeShape.Upper1(), -1);
    }
    {
        // More case nodes than model nodes.
        CaseFixture f(1);
        f.Write(FrequencyCaseBytes(TwoNodeCase()));
        EXPECT_EQ(FailureOf([&] { ReadFrequencyCase(f.state); }), kSubscriptOutOfRange);
        EXPECT_EQ(f.state.Freq.ModeShape.Upper1(), -1);
    }
    {
        // A mass block longer than the file, checked before its allocation.
        CaseFixture f;
        FrequencyCaseData c = TwoNodeCase();
        c.MassCount = 2000000000;
        f.Write(FrequencyCaseBytes(c));
        EXPECT_EQ(FailureOf([&] { f.ReadAll(); }), kInputPastEnd);
        EXPECT_EQ(f.state.Freq.MassTerms.Upper(), -1);
        c.MassCount = -1;
        c.Masses.clear();
        std::string bytes = FrequencyCaseBytes(c);
        Patch(bytes, 356, BytesI32(-1));
        f.Write(bytes);
        EXPECT_EQ(FailureOf([&] { f.ReadAll(); }), kSubscriptOutOfRange);
    }
}

TEST(FrequencyCase, ShapesFailAtTheFirstBadPairInTheFileOnAnyNumberOfThreads) {
    // Pairs of mode 2 and, later in the file, mode 3 spoilt: the equation or
    // the value of mode 2's freedom 3, then mode 3's freedom 1.
    const std::string start = "in its mode shapes, ";
    const struct {
        std::string mode2, mode3, message;
    } cases[] = {
        {BytesI32(-1), BytesI32(7), "subscript -1 outside 0..6"},
        {BytesI32(7), BytesI32(-1), "subscript 7 outside 0..6"},
        {BytesI32(3) + BytesF32(std::numeric_limits<float>::infinity()), BytesI32(-1),
         "overflow: Inf does not fit a single"},
        {BytesI32(3) + BytesF32(-std::numeric_limits<float>::infinity()), BytesI32(-1),
         "overflow: -Inf does not fit a single"},
        {BytesI32(3) + BytesF32(std::numeric_limits<float>::quiet_NaN()), BytesI32(7),
         "overflow: not a number stored in a single"},
    };
    for (const int threads : {1, 3}) {
        SetWorkerThreads(threads);
        SetSmallShares(threads > 1);
        for (const auto& c : cases) {
            CaseFixture f;
            std::string bytes = FrequencyCaseBytes(TwoNodeCase());
            Patch(bytes, 64 + 96 + 16, c.mode2);
            Patch(bytes, 64 + 2 * 96, c.mode3);
            f.Write(bytes);
            EXPECT_EQ(MessageOf([&] { f.ReadAll(); }), f.dir.File("FRAME.H1: ") + start + c.message)
                << threads;
        }
        // The peak of a mode is its largest magnitude, here mode 2's -6.5.
        CaseFixture f;
        f.Write(FrequencyCaseBytes(TwoNodeCase()));
        f.ReadAll();
        EXPECT_EQ(f.state.Freq.ShapePeak(1), 0.6f);
        EXPECT_EQ(f.state.Freq.ShapePeak(2), 6.5f);
        EXPECT_EQ(f.state.Freq.ShapePeak(3), 12.0f);
    }
    SetWorkerThreads(1);
    SetSmallShares(false);
}

}  // namespace
}  // namespace tremodal
