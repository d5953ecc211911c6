// The real TreModal, run as the suite's batch tool runs it: a command line,
// a settings file in its own configuration directory, no screen.
#include <gtest/gtest.h>

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
    WriteFile(f.File(".H1"), "");
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
    WriteFile(f.File(".H1"), "");
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
