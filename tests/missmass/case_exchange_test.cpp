#include "missmass/case_exchange.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::BytesF32;
using testing::Exists;
using testing::FakeHost;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

// Three nodes; node 2 has x and z equations 1 and 2, node 3 has x as
// equation 3 and shares it on its z freedom; node 1 has none. Two modes.
struct ExchangeFixture {
    TempDir dir;
    FakeHost host;
    RunState s;
    ExchangeFixture() {
        s.Ui = &host;
        s.Model.ModelPath = dir.File("FRAME");
        s.Model.NumNodes = 3;
        s.Freq.NumModes = 2;
        s.Freq.NumDof = 3;
        AllocateRunArrays(s);
        s.Freq.NodeDof(2, 1) = 1;
        s.Freq.NodeDof(2, 3) = 2;
        s.Freq.NodeDof(3, 1) = 3;
        s.Freq.NodeDof(3, 3) = 3;
        s.ModalDamping(1) = 0.04f;
        s.ModalDamping(2) = 0.07f;
        s.Curve.CurvePeriod(1) = 0.03f;
        s.MissMassCase = "11";
    }
    // A solved case as the solver leaves it: a header of its own, then six
    // singles per node.
    void WriteSolvedCase(const std::string& caseNo, std::size_t keep = std::string::npos) const {
        std::string bytes(24, '\x7f');
        for (int n = 1; n <= 3; ++n) {
            for (int k = 1; k <= 6; ++k) bytes += BytesF32(float(10 * n + k));
        }
        bytes += "trailing solver data";
        WriteFile(s.Model.ModelPath + ".R" + caseNo, bytes.substr(0, keep));
    }
};

TEST(CaseExchange, RunCombListsTheTranslationsSwitchedOnWithOne) {
    ExchangeFixture f;
    f.s.Options.MissMassStartCase = "10";
    f.s.Options.DirOn(1) = 1;
    f.s.Options.DirOn(2) = 2;  // on for the analysis, but not exactly 1
    f.s.Options.DirOn(3) = 1;
    f.s.Options.DirOn(4) = 1;  // rotations never go to the solver
    WriteMissMassComb(f.s);
    EXPECT_EQ(ReadFile(f.dir.File("FRAME.C0")),
              " 2 \r\n"
              "10             1 \r\n"
              "12             1 \r\n"
              "Missing Mass Run Comb\r\n");

    f.s.Options.DirOn(1) = 0;
    f.s.Options.DirOn(3) = 0;
    WriteMissMassComb(f.s);
    EXPECT_EQ(ReadFile(f.dir.File("FRAME.C0")), " 0 \r\nMissing Mass Run Comb\r\n");

    // An empty start case counts as 0.
    f.s.Options.MissMassStartCase = "";
    f.s.Options.DirOn(2) = 1;
    WriteMissMassComb(f.s);
    EXPECT_EQ(ReadFile(f.dir.File("FRAME.C0")), " 1 \r\n1              1 \r\nMissing Mass Run Comb\r\n");
}

TEST(CaseExchange, SolvedCaseBecomesThePseudoModeByEquation) {
    ExchangeFixture f;
    f.s.MissMassCase = " 11 ";
    f.WriteSolvedCase("11");
    ReadMissMassResults(f.s);
    EXPECT_TRUE(f.host.Messages.empty());
    EXPECT_EQ(f.s.MissMassRead, 1);
    EXPECT_EQ(f.s.MissMassNodal(1, 1), 11.0f);
    EXPECT_EQ(f.s.MissMassNodal(3, 6), 36.0f);
    EXPECT_EQ(f.s.MissMassDof(1), 21.0f);
    EXPECT_EQ(f.s.MissMassDof(2), 23.0f);
    EXPECT_EQ(f.s.MissMassDof(3), 33.0f);  // z of node 3 comes after its x
    EXPECT_EQ(f.s.MissMassDof(0), 36.0f);  // the last freedom without an equation
    // The pseudo-mode: frequency of the curve's first point with the
    // seven-digit 2 pi, damping of mode 1.
    EXPECT_EQ(f.s.Freq.Omega(3), float(6.283185 / double(0.03f)));
    EXPECT_NE(f.s.Freq.Omega(3), float(6.28318530717958 / double(0.03f)));
    EXPECT_EQ(f.s.ModalDamping(3), 0.04f);
}

TEST(CaseExchange, MissingOrDamagedSolvedCaseSaysSoAndGoesOn) {
    struct Damage {
        const char* what;
        std::size_t keep;  // bytes of the good file kept, npos for none written
        bool garbage;
    };
    const std::string message = "Missing Mass Case 11 Results not found or invalid";
    for (const Damage& damage : {Damage{"missing", 0, false}, Damage{"empty", 0, true},
                                 Damage{"cut in the node results", 24 + 3 * 24 - 1, true},
                                 Damage{"header only", 24, true}}) {
        ExchangeFixture f;
        if (damage.garbage) f.WriteSolvedCase("11", damage.keep);
        f.s.MissMassRead = 1;
        ReadMissMassResults(f.s);
        EXPECT_EQ(f.s.MissMassRead, 0) << damage.what;
        ASSERT_EQ(f.host.Messages.size(), 1u) << damage.what;
        EXPECT_EQ(f.host.Messages[0], message);
        EXPECT_EQ(f.host.MessageTitles[0], "TREMODAL");
        EXPECT_EQ(f.s.Freq.Omega(3), 0.0f) << damage.what;
    }
    {
        // The binary open would create the file; a missing one stays missing.
        ExchangeFixture f;
        ReadMissMassResults(f.s);
        EXPECT_FALSE(Exists(f.dir.File("FRAME.R11")));
    }
    {
        // A NaN in the solver's numbers never reaches the response file.
        ExchangeFixture f;
        std::string bytes(24, '\0');
        for (int i = 0; i < 18; ++i) bytes += i == 7 ? std::string("\0\0\xc0\x7f", 4) : BytesF32(1.0f);
        WriteFile(f.dir.File("FRAME.R11"), bytes);
        ReadMissMassResults(f.s);
        EXPECT_EQ(f.s.MissMassRead, 0);
        EXPECT_EQ(f.host.Messages, std::vector<std::string>{message});
    }
    {
        // A good file with a curve starting at period 0 fails after the read,
        // with the same message.
        ExchangeFixture f;
        f.WriteSolvedCase("11");
        f.s.Curve.CurvePeriod(1) = 0;
        ReadMissMassResults(f.s);
        EXPECT_EQ(f.s.MissMassRead, 0);
        EXPECT_EQ(f.host.Messages, std::vector<std::string>{message});
    }
}

}  // namespace
}  // namespace tremodal
