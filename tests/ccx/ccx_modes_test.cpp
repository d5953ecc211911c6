// tremodal-ccx modes: the model it writes gives TreModal's report the
// frequencies, participation factors and effective masses that ccx prints for
// the same deck, on two frames with point masses (one with its masses off the
// centre, one with Z vertical) and a solid column with distributed mass; and
// its failures say what went wrong and leave nothing beside the model.
#include <algorithm>
#include <filesystem>
#include <regex>

#include "ccx_workspace.h"
#include "tools/frequency_case_writer.h"

namespace tremodal::ccxtest {
namespace {

TEST(CcxModes, TreModalReportsTheModalFiguresCcxPrints) {
    if (!CcxInstalled()) GTEST_SKIP() << "ccx is not installed";
    struct Model {
        const char* name;
        std::string deck;
        bool zUp;
        const char* massLine;            // what modes says of the mass
        std::array<double, 3> lastNode;  // in the deck
    };
    const Model models[] = {
        {"one storey, heavy side at z = 3",
         Deck("frame-off-centre.inp"),
         false,
         "mass: diagonal over the equations: the frequency case is exact",
         {0, 3, 3}},
        {"three storeys, Z vertical",
         Deck("frame-z-up.inp"),
         true,
         "mass: diagonal over the equations: the frequency case is exact",
         {0, 3, 9}},
        {"solid column", Deck("solid-column.inp"), false, "mass: consistent, not diagonal", {1, 3, 1}},
    };
    for (const Model& model : models) {
        SCOPED_TRACE(model.name);
        Workspace w;
        WriteFile(w.dir.File("deck.inp"), model.deck);
        ASSERT_EQ(w.TremCcx(std::string("modes deck.inp M --modes 6") + (model.zUp ? " --vertical z" : "")),
                  0)
            << w.err;
        EXPECT_NE(w.out.find(model.massLine), std::string::npos) << w.out;
        std::smatch said;
        ASSERT_TRUE(
            std::regex_search(w.out, said, std::regex("differ from CalculiX's by at most ([-+.0-9E]+) %")));
        const double announced = std::stod(said[1]) / 100;
        // Rows lumped over each direction keep a consistent mass's
        // participation: what modes announces stays at ccx's printed digits.
        EXPECT_LT(announced, 1e-6);
        // The last node's record: its number and the deck's coordinates on
        // the suite's axes.
        const std::string xyz = ReadFile(w.File(".XYZ"));
        const std::size_t last = xyz.size() - 14;
        const std::array<double, 3> at = model.lastNode;
        EXPECT_EQ(xyz.substr(last, 2), testing::BytesI16(std::int16_t(xyz.size() / 14)));
        EXPECT_EQ(xyz.substr(last + 2), testing::BytesF32(float(at[0])) +
                                            testing::BytesF32(float(model.zUp ? at[2] : at[1])) +
                                            testing::BytesF32(float(model.zUp ? -at[1] : at[2])));
        // Nothing of ccx's is left behind.
        EXPECT_TRUE(std::filesystem::is_empty(w.dir.File("tmp")));

        const ccx::ModalTables printed =
            ccx::ReadModalTables(w.Ccx(model.deck, "*STEP\n*FREQUENCY\n6\n*END STEP\n", "ref"));
        ASSERT_EQ(printed.Eigenvalues.size(), 6u);
        w.WriteOptions(false);
        const testing::ProgramRun report =
            testing::RunTreModal(w.dir.Path(), "--report 1 --model M --csv csv");
        ASSERT_EQ(report.status, 0) << report.err;

        const auto modes = w.Csv("modes.csv");
        ASSERT_EQ(modes.size(), 6u);
        for (std::size_t m = 0; m < 6; ++m)
            EXPECT_TRUE(Agrees(modes[m][1] * modes[m][1], printed.Eigenvalues[m], 0)) << "mode " << m + 1;

        // Suite direction d against the deck's axis and its sign.
        const int axis[3] = {0, model.zUp ? 2 : 1, model.zUp ? 1 : 2};
        const double sign[3] = {1, 1, model.zUp ? -1.0 : 1.0};
        const auto participation = w.Csv("participation.csv");
        ASSERT_EQ(participation.size(), 18u);
        for (const auto& row : participation) {
            const int d = int(row[0]) - 1;
            const std::size_t m = std::size_t(row[1]) - 1;
            const double total = printed.TotalMass[axis[d]];
            const double gamma = sign[d] * printed.Participation[m][axis[d]];
            const double mass = printed.EffectiveMass[m][axis[d]];
            EXPECT_TRUE(Agrees(row[2], gamma, std::sqrt(total), std::sqrt(announced * total)))
                << "direction " << d + 1 << " mode " << m + 1 << ": " << row[2] << " against " << gamma;
            EXPECT_TRUE(Agrees(row[3], mass, total, announced * total))
                << "direction " << d + 1 << " mode " << m + 1 << ": " << row[3] << " against " << mass;
        }
    }
}

// What modes makes of ccx's files, from a stand-in ccx that leaves them: a
// node swaying in x, a mode of eigenvalue -50 (of no frequency, left out)
// and one of 100 in which it moves by 0.5; its mass is 4.
TEST(CcxModes, TheFrequencyCaseHoldsTheModesOfAFrequencyAndTheMovingFreedoms) {
    Workspace w;
    std::filesystem::create_directories(w.dir.File("ccx"));
    WriteFile(w.dir.File("deck.inp"), "*NODE\n1, 0, 0, 0\n2, 0, 3, 0\n");
    WriteFile(w.dir.File("ccx/modes.dat"),
              "E I G E N V A L U E   O U T P U T\n 1 -0.5E+02 0 0 0.7E+01\n 2 0.1E+03 0.1E+02 0.16E+01 0\n"
              "E F F E C T I V E   M O D A L   M A S S\n 1 0 0 0 0 0 0\n 2 1 0 0 0 0 0\n"
              "T O T A L   E F F E C T I V E   M A S S\n 4 4 4 0 0 0\n"
              "displacements (vx,vy,vz) for set A and time 1\n 1 0 1E-22 0\n 2 1.0 0 0\n"
              "displacements (vx,vy,vz) for set A and time 1\n 1 0 1E-22 0\n 2 0.5 0 0\n");
    WriteFile(w.dir.File("ccx/mass.dof"), "2.1\n2.2\n2.3\n");
    WriteFile(w.dir.File("ccx/mass.mas"), "1 1 4\n2 2 4\n3 3 4\n");
    WriteFile(w.dir.File("ccx/ccx"), "#!/bin/sh\ncp \"$(dirname \"$0\")/$1\".* .\n");
    std::filesystem::permissions(w.dir.File("ccx/ccx"), std::filesystem::perms::owner_all);
    ASSERT_EQ(w.TremCcx("modes deck.inp M", "CCX=" + w.dir.File("ccx/ccx")), 0) << w.err;
    EXPECT_NE(w.out.find("ccx's modes 1 to 1 have an eigenvalue of 0 or below and are left out"),
              std::string::npos)
        << w.out;
    example::FrequencyCaseData c;
    c.CaseNodes = 2;
    c.NumDof = 1;
    c.DirMass = {4, 0, 0, 0, 0, 0};
    c.Eigenvalues = {100};
    c.NodeDof = {{0, 0, 0, 0, 0, 0}, {1, 0, 0, 0, 0, 0}};
    c.Shapes = {{0, 0.5f}};
    c.Masses = {4};
    EXPECT_EQ(ReadFile(w.File(".H1")), example::FrequencyCaseBytes(c));
}

TEST(CcxModes, FailuresSayWhatFailedAndLeaveNothingBesideTheModel) {
    const std::string frame = Deck("frame-off-centre.inp");
    const std::string stepLine =
        "deck.inp line " + std::to_string(std::count(frame.begin(), frame.end(), '\n') + 1);
    struct Case {
        const char* args;
        std::string deck;
        const char* environment;
        int status;
        std::string message;
        bool scratchKept;
    };
    const Case cases[] = {
        {"", frame, "", 2, "a command is needed: modes or solve", false},
        {"modes deck.inp", frame, "", 2, "modes takes a deck and a model path", false},
        {"modes deck.inp M --vertical x", frame, "", 2, "--vertical takes y or z, not \"x\"", false},
        {"modes deck.inp M --modes 0", frame, "", 2, "--modes takes a whole number from 1 to 10000", false},
        {"shapes deck.inp M", frame, "", 2, "unknown command \"shapes\"", false},
        {"modes deck.inp M", frame + "*STEP\n*STATIC\n*END STEP\n", "", 1,
         stepLine + ": \"*STEP\": the deck must define the model only", false},
        {"modes deck.inp M", "*NODE\n1, 0, 0, 0\n40000, 0, 3, 0\n", "", 1,
         "deck.inp line 3: node \"40000\": the suite numbers nodes from 1 to 32767", false},
        {"modes nodeck.inp M", frame, "", 1, "nodeck.inp: no such file", false},
        {"modes deck.inp M", frame, "CCX=/bin/false", 1,
         "ccx failed with exit status 1 on the eigen-solution", true},
        {"modes deck.inp M", frame, "CCX=no-such-ccx", 1, "ccx was not found (no-such-ccx;", true},
        {"modes deck.inp M", frame, "CCX=/bin/true", 1, "ccx left no modes in modes.dat", true},
        {"solve deck.inp M", frame, "", 1, "M.XSZ", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args + std::string(" ") + c.environment);
        Workspace w;
        WriteFile(w.dir.File("deck.inp"), c.deck);
        EXPECT_EQ(w.TremCcx(c.args, c.environment), c.status);
        EXPECT_NE(w.err.find(c.message), std::string::npos) << w.err;
        EXPECT_EQ(w.err.find("kept in " + w.dir.File("tmp/tremodal-ccx-")) != std::string::npos,
                  c.scratchKept)
            << w.err;
        EXPECT_EQ(std::filesystem::is_empty(w.dir.File("tmp")), !c.scratchKept);
        for (const char* suffix : {".XSZ", ".XYZ", ".H1", ".XSZ.tremodal-ccx"})
            EXPECT_FALSE(testing::Exists(w.File(suffix))) << suffix;
    }

    // solve, when ccx fails on the static cases: nothing is written.
    Workspace w;
    WriteFile(w.dir.File("deck.inp"), frame);
    WriteFile(w.File(".XSZ"), "-\r\nM\r\n-\r\n-\r\n-\r\n-\r\n0,0,8,0\r\n");
    WriteFile(w.File(".C0"), " 1 \r\n10             1 \r\nMissing Mass Run Comb\r\n");
    WriteFile(w.File(".L10"), "REFORMAT\r\nNF,5,100,,0\r\n");
    EXPECT_EQ(w.TremCcx("solve deck.inp M", "CCX=/bin/false"), 1);
    EXPECT_NE(w.err.find("ccx failed with exit status 1 on the static cases"), std::string::npos) << w.err;
    EXPECT_FALSE(testing::Exists(w.File(".R10")));
    EXPECT_FALSE(testing::Exists(w.File(".R10.tremodal-ccx")));
}

}  // namespace
}  // namespace tremodal::ccxtest
