// The real TreModal, run as the suite's batch tool runs it: a command line,
// a settings file in its own configuration directory, no screen.
#include <gtest/gtest.h>

#include <cstdio>

#include "support/frequency_case_fixture.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::ModelFixture;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

TEST(BatchRun, RunsThroughToCasepostAndEndsWithIt) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    EXPECT_EQ(f.RunTreModal("3/7/"), 0) << f.Stderr();
    // casepost ran once, in the directory the batch tool started us in.
    EXPECT_EQ(ReadFile(f.dir.File("casepost.out")), "casepost ran in " + f.dir.Path() + "\n");
    EXPECT_EQ(ReadFile(f.dir.File("response.cnt")), f.modelPath +
                                                        "\r\n"
                                                        "20\r\n"
                                                        " 1  0  0  0  0  0 \r\n"
                                                        " 0 \r\n"
                                                        "0\r\n"
                                                        " 1 \r\n"
                                                        " 0.05 \r\n"
                                                        " 10 \r\n");
    EXPECT_FALSE(Exists(f.File(".LOG")));
}

TEST(BatchRun, LeavesEveryFileTheSuiteExpects) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    WriteFile(f.File(".HS1"), std::string(100000, 'x'));  // an older, longer response file
    ASSERT_EQ(f.RunTreModal("3/7/"), 0) << f.Stderr();
    EXPECT_EQ(f.Stderr(), "");
    // Direction 1 only; the response file is rewritten in place and keeps
    // the older file's tail.
    const std::string response = ReadFile(f.File(".HS1"));
    EXPECT_EQ(response.size(), 100000u);
    EXPECT_EQ(response.substr(0, 2), std::string("\x04\x00", 2));
    EXPECT_EQ(response.back(), 'x');
    EXPECT_FALSE(Exists(f.File(".HS2")));
    // The options file's results case 20 wins over the command line's 7.
    for (const char* suffix : {".L20", ".W20", ".120", ".220", ".NSL"}) {
        EXPECT_TRUE(Exists(f.File(suffix))) << suffix;
    }
    EXPECT_FALSE(Exists(f.File(".L7")));
    const std::string header = ReadFile(f.File(".L20"));
    EXPECT_EQ(header.substr(0, 10), "REFORMAT\r\n");
    EXPECT_NE(header.find("\r\nSCASE,MOTION Response Spectrum (Seismic)\r\n"), std::string::npos);
    EXPECT_NE(header.find("ACOM,Response Spectrum Curve - Modal Points\r\n"), std::string::npos);
    EXPECT_NE(header.find("ACOM,Mode  Period (Secs)"), std::string::npos);
    EXPECT_EQ(ReadFile(f.dir.File("casepost.out")), "casepost ran in " + f.dir.Path() + "\n");
}

// Node and mode numbers are 16-bit in the suite's files: 32,767 of either is
// the largest model they can describe, and it must run like any other.
TEST(BatchRun, ModelsAtTheCeilingOfTheFormatsRunThrough) {
    {
        // A one-column building of 32,767 nodes, two modes.
        TempDir dir;
        const std::string tool =
            std::string("'") + EXAMPLE_TOOL + "' '" + dir.Path() +
            "' --name-file --storeys 32766 --modes 2 --directions 1 --comb SRSS > /dev/null";
        ASSERT_EQ(testing::RunCommand(tool), 0);
        testing::WriteStandInCasepostIn(dir.Path());
        ASSERT_EQ(testing::RunTreModalIn(dir.Path(), "1/20/"), 0) << ReadFile(dir.File("stderr.txt"));
        const std::string response = ReadFile(dir.File("SHEAR.HS1"));
        ASSERT_EQ(response.size(), 16u + 2 * 8 + 2 * 48 * 32767u);
        EXPECT_EQ(response.substr(0, 2), std::string("\xff\x7f", 2));
        // The top node's x freedom closes the second block: its equation
        // ends the building's 65,532.
        EXPECT_EQ(response.substr(response.size() - 48, 4), std::string("\xfb\xff\0\0", 4));
    }
    {
        // The four-node frame with 32,767 modes, combined by SRSS.
        ModelFixture f;
        f.WriteStandInCasepost();
        std::string options = testing::kFreshOptionsFile;
        const std::string cqc = "Modal Combination Method               , 1 ";
        options.replace(options.find(cqc), cqc.size(), "Modal Combination Method               , 0 ");
        WriteFile(f.File(".USM3"), options);
        testing::FrequencyCaseData c;
        c.CaseNodes = 4;
        c.NumDof = 6;
        c.DirMass = {3, 3, 3, 0, 0, 0};
        c.NodeDof = {{0, 0, 0, 0, 0, 0}, {1, 0, 2, 0, 0, 0}, {3, 0, 4, 0, 0, 0}, {5, 0, 6, 0, 0, 0}};
        for (int m = 1; m <= 32767; ++m) {
            c.Eigenvalues.push_back(100.0 + m);
            c.Shapes.push_back({0, 0.001f, 0, 0.002f, 0, 0.003f, 0});
        }
        c.Masses = {1, 1, 1, 1, 1, 1};
        WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
        ASSERT_EQ(f.RunTreModal("3/7/"), 0) << f.Stderr();
        const std::string response = ReadFile(f.File(".HS1"));
        EXPECT_EQ(response.size(), 16u + 8 * 32767u + 4 * 48 * 32767u);
        EXPECT_EQ(response.substr(6, 4), std::string("\xff\x7f\0\0", 4));
    }
}

}  // namespace
}  // namespace tremodal
