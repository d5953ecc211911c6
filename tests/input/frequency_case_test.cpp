#include "input/frequency_case.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "base/worker_threads.h"
#include "support/test_support.h"
#include "tools/frequency_case_writer.h"

namespace tremodal {
namespace {

using namespace example;
using namespace testing;

const char* const kLumpedText = "Lumped Mass Model should be used for Seismic Response Analysis";

struct CaseFixture {
    testing::TempDir dir;
    testing::FakeHost host;
    RunState state;
    explicit CaseFixture(float nodes = 2) {
        state.Model.ModelPath = dir.File("FRAME"), state.Model.NumNodes = nodes, state.Ui = &host;
        state.Options.FreqCase = " 1", state.Options.DampingRatio = 0.05f;
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
    c.CaseNodes = 2, c.NumDof = 6, c.MassForm = 1;
    c.DirMass = {12.5f, 1, 2, 3, 4, 5}, c.Eigenvalues = {39.5, 412.25, 1000.001};
    c.NodeDof = {{1, 2, 3, 4, 5, 6}, {0, 0, 0, 0, 0, 0}};
    c.Shapes = {{0, 0.1f, 0.2f, 0.3f, 0.4f, 0.5f, 0.6f},
                {0, 1.5f, -2.5f, 3.5f, -4.5f, 5.5f, -6.5f},
                {0, 7, 8, 9, 10, 11, 12}};
    c.Masses = {1.25, 2.5, 3.75, 5, 6.25, 7.1};
    return c;
}

TEST(FrequencyCase, MassFormDecidesTheBlockAndTheMessage) {
    // Square form in the dialog: the two-line message; only the diagonal is
    // kept, and the terms off it are passed over even when damaged. Value 2
    // is read as lumped and tells the user, in a batch run too.
    // clang-format off
    const struct { std::int32_t form; i16 batch; std::string message; std::int32_t read; f32 sixth; }
    forms[] = {
        {0, 0, std::string(kLumpedText) + "\nIgnore if Lumped Mass is set for 3-D Jacobi Eigen Solver", 0,
         0.1f},
        {2, 1, kLumpedText, 1, 7.1f}};
    // clang-format on
    for (const auto& form : forms) {
        CaseFixture f;
        FrequencyCaseData c = TwoNodeCase();
        c.MassForm = form.form, c.OffDiagonal = std::numeric_limits<double>::quiet_NaN();
        if (form.form == 0) c.Masses = {1.5, 2.5, 3.5, 4.5, 5.5, 0.1};
        const std::string bytes = FrequencyCaseBytes(c);
        f.Write(bytes), f.state.BatchRun = form.batch;
        f.ReadAll();
        EXPECT_EQ(f.host.Messages, std::vector<std::string>{form.message});
        EXPECT_EQ(f.host.MessageTitles, std::vector<std::string>{"TREMODAL"});
        EXPECT_EQ(
            std::vector<std::int64_t>({f.state.Freq.MassForm, f.state.Freq.MassTerms.Upper(), f.Position()}),
            std::vector<std::int64_t>({form.read, 6, std::int64_t(bytes.size())}));
        EXPECT_EQ(std::vector<f32>({f.state.Freq.MassTerms(1), f.state.Freq.MassTerms(6)}),
                  std::vector<f32>({form.form == 0 ? 1.5f : 1.25f, form.sixth}));
        // The peak of a mode is its largest magnitude: mode 2's is -6.5.
        const auto& peak = f.state.Freq.ShapePeak;
        EXPECT_EQ(std::vector<f32>({peak(1), peak(2), peak(3)}), std::vector<f32>({0.6f, 6.5f, 12.0f}));
    }
}

TEST(FrequencyCase, ZeroEigenvalueEndsTheListWithoutTheSlotsBehindIt) {
    // Ten modes announced, the third eigenvalue is the zero: the shape block
    // of two modes follows the zero directly and the file ends with the mass
    // block. The arrays keep room for the ten announced modes. Equations are
    // not tied to the case nodes: 40 equations, two nodes.
    CaseFixture f;
    FrequencyCaseData c = TwoNodeCase();
    c.Modes = 10, c.NumDof = 40, c.Eigenvalues = {39.5, 412.25, 0.0};
    c.Masses.resize(40, 1.0), c.Shapes.resize(2);
    const std::string bytes = FrequencyCaseBytes(c);
    ASSERT_EQ(bytes.size(), 40u + 3 * 8 + 2 * 2 * 48 + 4 + 4 + 40 * 8);
    f.Write(bytes);
    f.ReadAll();
    const FrequencyCase& r = f.state.Freq;
    // Modes read, room for modes, and the file read to its end.
    EXPECT_EQ(
        std::vector<std::int64_t>({r.NumModes, r.Eigenvalue.Upper(), r.ModeShape.Upper2(), f.Position()}),
        std::vector<std::int64_t>({2, 10, 10, std::int64_t(bytes.size())}));
    EXPECT_EQ(std::vector<f32>({r.ModeShape(3, 2), r.MassTerms(6), r.MassTerms(40)}),
              std::vector<f32>({3.5f, 7.1f, 1.0f}));

    // No mode at all: the equation count stands by itself.
    CaseFixture h;
    h.Write(BytesI32(0) + BytesI32(13) + BytesI32(1) + std::string(28, '\0') + BytesF64(0) + BytesI32(1) +
            BytesI32(0));
    h.ReadAll();
    EXPECT_EQ(
        std::vector<std::int64_t>({h.state.Freq.NumModes, h.state.Freq.NumDof, h.state.Excitation.Upper()}),
        std::vector<std::int64_t>({0, 13, 13}));
}

// Every broken file fails with its number, on one thread as on several,
// at the first fault in the file, and before the arrays its header sizes are
// allocated where that fault lies before the shapes.
TEST(FrequencyCase, BrokenFilesFailBeforeTheirArraysAreAllocated) {
    // What the machine can give is set low, so that the test does not depend
    // on the memory of the machine it runs on.
    struct Budget {
        std::int64_t old = MemoryBudget();
        Budget() { SetMemoryBudget(std::int64_t(1) << 30); }
        ~Budget() { SetMemoryBudget(old); }
    } budget;
    FrequencyCaseData square = TwoNodeCase(), longMasses = TwoNodeCase();
    square.MassForm = 0, longMasses.MassCount = 2000000000;
    const std::string lumped = FrequencyCaseBytes(TwoNodeCase()), squareBytes = FrequencyCaseBytes(square);
    // A header, then an unused word and direction masses, one eigenvalue and
    // 52 bytes to the end.
    const auto header = [](std::int32_t caseNodes, std::int32_t dof, std::int32_t modes) {
        return BytesI32(caseNodes) + BytesI32(dof) + BytesI32(modes) + std::string(28, '\0') + BytesF64(100) +
               std::string(52, '\0');
    };
    // Mode 2's freedom 3 spoilt (its equation, or its value behind equation
    // 3), and, later in the file, mode 3's equation of freedom 1.
    const auto pairs = [&](const std::string& mode2, const std::string& mode3) {
        std::string bytes = lumped;
        bytes.replace(64 + 96 + 16, mode2.size(), mode2), bytes.replace(64 + 2 * 96, mode3.size(), mode3);
        return bytes;
    };
    // clang-format off
    struct Case { std::string bytes; int failure; bool allocated; const char* message = nullptr;
                  float nodes = 2; };
    std::vector<Case> cases = {
        // Arrays of 16 GB; a zero that ends the list while the arrays keep
        // its count; the zero leaving one mode whose shapes overrun the
        // file; a shape block beyond the file; negative counts; five node
        // blocks that cannot stand in 56 bytes.
        {header(1, 2000000000, 1), kOutOfMemory, false}, {header(0, 6, 2000000000), kOutOfMemory, false},
        {header(1, 6, 3), kInputPastEnd, false}, {header(2000000000, 6, 1), kInputPastEnd, false},
        {header(-1, 6, 1), kSubscriptOutOfRange, false}, {header(1, -6, 1), kSubscriptOutOfRange, false},
        {header(1, 6, -1), kSubscriptOutOfRange, false}, {header(5, 6, 1), kInputPastEnd, false},
        // A list with neither its count nor a zero in the file.
        {header(1, 6, 4).substr(0, 48) + BytesF64(200), kInputPastEnd, false},
        // More case nodes than model nodes.
        {lumped, kSubscriptOutOfRange, false, nullptr, 1},
        // A mass block longer than the file, or of a negative count.
        {FrequencyCaseBytes(longMasses), kInputPastEnd, true},
        {lumped.substr(0, 356) + BytesI32(-1), kSubscriptOutOfRange, true},
        {pairs(BytesI32(-1), BytesI32(7)), kSubscriptOutOfRange, true, "subscript -1 outside 0..6"},
        {pairs(BytesI32(7), BytesI32(-1)), kSubscriptOutOfRange, true, "subscript 7 outside 0..6"},
        {pairs(BytesI32(3) + BytesF32(std::numeric_limits<f32>::infinity()), BytesI32(-1)), kOverflow, true,
         "overflow: Inf does not fit a single"},
    };
    // clang-format on
    // Cut in the header, eigenvalues, shape block, mass form, mass count,
    // masses; the discarded word and the last term of the square block.
    for (const std::size_t cut : std::vector<std::size_t>{0, 39, 63, 64, 351, 355, 359, lumped.size() - 1})
        cases.push_back({lumped.substr(0, cut), kInputPastEnd, cut > 351});
    for (const std::size_t cut : std::vector<std::size_t>{357, 360, squareBytes.size() - 1})
        cases.push_back({squareBytes.substr(0, cut), kInputPastEnd, true});
    for (const int threads : {1, 3}) {
        SetWorkerThreads(threads), SetSmallShares(threads > 1);
        for (const auto& c : cases) {
            CaseFixture f(c.nodes);
            f.Write(c.bytes);
            const std::string where = std::to_string(c.bytes.size()) + " bytes, " + std::to_string(threads);
            EXPECT_EQ(FailureOf([&] { f.ReadAll(); }), c.failure) << where;
            if (c.message) {
                EXPECT_EQ(MessageOf([&] { f.ReadAll(); }),
                          f.dir.File("FRAME.H1: in its mode shapes, ") + c.message);
            }
            // Nothing allocated where the fault lies before the shapes, and
            // never the masses.
            const int shapes = f.state.Freq.ModeShape.Upper1(), accelerations = f.state.ModalAccel.Upper1();
            EXPECT_TRUE(c.allocated || (shapes == -1 && accelerations == -1)) << where;
            EXPECT_EQ(f.state.Freq.MassTerms.Upper(), -1) << where;
        }
    }
    SetWorkerThreads(1), SetSmallShares(false);
}

}  // namespace
}  // namespace tremodal
