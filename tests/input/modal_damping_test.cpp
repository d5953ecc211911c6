#include "input/modal_damping.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::TempDir;
using testing::WriteFile;

constexpr float kDefault = 0.05f;

struct DampingFixture {
    TempDir dir;
    RunState state;
    DampingFixture() {
        state.Model.ModelPath = dir.File("FRAME");
        state.Options.FreqCase = "  2";
        state.Options.DampingRatio = kDefault;
        state.Freq.NumModes = 5;
        state.ModalDamping.Allocate(6);
    }
    // Reads the file with the given text (none when text is null) and gives
    // slots 0..6.
    std::vector<float> Read(const char* text) {
        if (text) WriteFile(dir.File("FRAME.USD2"), text);
        ReadModalDamping(state);
        std::vector<float> slots;
        for (int m = 0; m <= 6; ++m) slots.push_back(state.ModalDamping(m));
        return slots;
    }
};

const float d = kDefault;

TEST(ModalDamping, WithoutPairsEveryModeTakesTheDefault) {
    EXPECT_EQ(DampingFixture().Read(nullptr), (std::vector<float>{0, d, d, d, d, d, 0}));
    EXPECT_EQ(DampingFixture().Read(""), (std::vector<float>{0, d, d, d, d, d, 0}));
    EXPECT_EQ(DampingFixture().Read("-1\r\n1 0.02\r\n"), (std::vector<float>{0, d, d, d, d, d, 0}));
    // The file of another case is not read.
    DampingFixture other;
    WriteFile(other.dir.File("FRAME.USD1"), "1 0.02");
    EXPECT_EQ(other.Read(nullptr), (std::vector<float>{0, d, d, d, d, d, 0}));
}

TEST(ModalDamping, PairsSetTheirModesAndBadRatiosFallBackToTheDefault) {
    // Any order, any separator, the last pair of a mode counting; 0 and
    // negative ratios, and a text that is no number, give the default. No -1
    // at the end.
    EXPECT_EQ(DampingFixture().Read("3, 0.07\n1 0.02\r\n4,0\n  5 -0.1\n1 0.03\r\n0 0.5 2 abc"),
              (std::vector<float>{0.5f, 0.03f, d, 0.07f, d, d, 0}));
    // A changed default applies to the modes that the file leaves alone.
    DampingFixture f;
    f.state.Options.DampingRatio = 0.02f;
    EXPECT_EQ(f.Read("3 0.07 -1"), (std::vector<float>{0, 0.02f, 0.02f, 0.07f, 0.02f, 0.02f, 0}));
}

TEST(ModalDamping, ListEndsAtMinusOneOrAModeAboveTheCount) {
    EXPECT_EQ(DampingFixture().Read("1 0.02 -1 2 0.03"), (std::vector<float>{0, 0.02f, d, d, d, d, 0}));
    // The ratio of mode 6 goes into the pseudo-mode's slot; the pairs behind
    // it are ignored, valid modes too.
    EXPECT_EQ(DampingFixture().Read("2 0.04\n6 0.09\n3 0.08\n-1\n"),
              (std::vector<float>{0, d, 0.04f, d, d, d, 0.09f}));
    EXPECT_EQ(DampingFixture().Read("5 0.01 9 0.2 1 0.3"), (std::vector<float>{0, d, d, d, d, 0.01f, 0}));
}

TEST(ModalDamping, FaultsEndTheReadingQuietlyKeepingWhatWasRead) {
    // A mode beyond the array, a negative mode, a mode number too large for
    // 16 bits, a file ending after a mode number.
    EXPECT_EQ(DampingFixture().Read("1 0.02 7 0.5 2 0.03"), (std::vector<float>{0, 0.02f, d, d, d, d, 0}));
    EXPECT_EQ(DampingFixture().Read("4 0.06 -3 0.5 2 0.03"), (std::vector<float>{0, d, d, d, 0.06f, d, 0}));
    EXPECT_EQ(DampingFixture().Read("4 0.06 40000 0.5"), (std::vector<float>{0, d, d, d, 0.06f, d, 0}));
    EXPECT_EQ(DampingFixture().Read("1 0.02\n2"), (std::vector<float>{0, 0.02f, d, d, d, d, 0}));
    // A ratio beyond a single's range.
    EXPECT_EQ(DampingFixture().Read("1 0.02 2 1e300"), (std::vector<float>{0, 0.02f, d, d, d, d, 0}));
    // A directory where the file should be is read as no file.
    DampingFixture f;
    ASSERT_EQ(testing::RunCommand("mkdir '" + f.dir.File("FRAME.USD2") + "'"), 0);
    EXPECT_EQ(f.Read(nullptr), (std::vector<float>{0, d, d, d, d, d, 0}));
}

}  // namespace
}  // namespace tremodal
