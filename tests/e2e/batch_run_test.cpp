// The real TreModal, run as the suite's batch tool runs it: a command line,
// a settings file in its own configuration directory, no screen.
#include <gtest/gtest.h>

#include <cstdio>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

TEST(BatchRun, RunsThroughToCasepostAndEndsWithIt) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    EXPECT_EQ(f.RunTreModal("3/7/"), 0) << f.Stderr();
    // casepost ran once, in the directory the batch tool started us in.
    EXPECT_EQ(ReadFile(f.dir.File("casepost.out")), "casepost ran in " + f.dir.Path() + "\n");
    EXPECT_EQ(ReadFile(f.dir.File("response.cnt")),
              f.modelPath + "\r\n"
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

TEST(BatchRun, DamagedFrequencyCaseLogsTheGenericLine) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    const std::string whole = ReadFile(f.File(".H1"));
    // Cut inside the shape block, inside the mass block, and a header that
    // announces two thousand million equations in a few bytes.
    const std::string absurd = std::string("\x04\0\0\0\0\x94\x35\x77\x02\0\0\0", 12) + whole.substr(12);
    for (const std::string& damaged : {whole.substr(0, 150), whole.substr(0, whole.size() - 4), absurd}) {
        WriteFile(f.File(".H1"), damaged);
        std::remove(f.File(".LOG").c_str());
        EXPECT_EQ(f.RunTreModal("3/7/"), 1);
        EXPECT_EQ(ReadFile(f.File(".LOG")),
                  "TREMODAL  E 62 ; L;  102 ; Model Or Data; Error - Check; Model & Re - Run; \r\n");
        EXPECT_FALSE(Exists(f.dir.File("casepost.out")));
    }
}

TEST(BatchRun, BadSpectrumSaysSoAndRunsOn) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    WriteFile(f.File(".URS1"), "0,1\r\nten,1\r\n");
    ASSERT_EQ(f.RunTreModal("3/7/"), 0);
    EXPECT_EQ(f.Stderr(), "TREMODAL: Error in Spectrum Data\n");
    EXPECT_TRUE(Exists(f.File(".L20")));
    EXPECT_TRUE(Exists(f.dir.File("casepost.out")));
}

TEST(BatchRun, FailureLogsOneLineAndEndsWithoutCasepost) {
    ModelFixture f;
    f.WriteStandInCasepost();
    EXPECT_EQ(f.RunTreModal("3/7/2/"), 1);  // no frequency case file
    const std::string line = "TREMODAL - Frequency or Response Spectrum Data not Found";
    EXPECT_EQ(ReadFile(f.File(".LOG")), line + "\r\n");
    EXPECT_NE(f.Stderr().find(line + "\n"), std::string::npos);
    EXPECT_FALSE(Exists(f.dir.File("casepost.out")));
    EXPECT_FALSE(Exists(f.dir.File("response.cnt")));

    EXPECT_EQ(f.RunTreModal("8/7/"), 1);
    EXPECT_EQ(ReadFile(f.File(".LOG")), line + "\r\nTREMODAL - Response Options File (8) Not Found \r\n");
}

TEST(BatchRun, CasepostThatCannotStartEndsTheRunQuietly) {
    ModelFixture f;  // no bin/casepost
    f.WriteFrequencyCase();
    EXPECT_EQ(f.RunTreModal("3/7/"), 0) << f.Stderr();
    EXPECT_TRUE(Exists(f.dir.File("response.cnt")));
    EXPECT_FALSE(Exists(f.File(".LOG")));
}

TEST(BatchRun, UnwritableLogStillEndsWithStatusOne) {
    ModelFixture f;
    // The model path points into a directory that does not exist, so neither
    // its size file nor its log can be opened.
    WriteFile(f.dir.File("MODEL.NAM"), "\"" + f.dir.File("missing/FRAME") + "\",FRAME\r\n");
    EXPECT_EQ(f.RunTreModal("3/7/"), 1);
    EXPECT_NE(f.Stderr().find("TREMODAL  E 53 ; L;  0 ; Model Or Data; Error - Check; Model & Re - Run; \n"),
              std::string::npos);
}

}  // namespace
}  // namespace tremodal
