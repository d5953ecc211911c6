// The real TreModal, run as the suite's batch tool runs it: a command line,
// a settings file in its own configuration directory, no screen.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

#include "base/file_system.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using namespace testing;

// A duration below a tenth of a second goes to casepost as 0.1.
TEST(BatchRun, RunsThroughToCasepostAndEndsWithIt) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    EditOptions(f.modelPath, "3", [](ResponseOptions& o) { o.Duration = 0.05f; });
    WriteFile(f.File(".HS1"), std::string(100000, 'x'));  // an older, longer response file
    EXPECT_OUTCOME(f, f.Run("3/7/"), testing::RanOn(""));
    // casepost ran once, in the directory the batch tool started us in.
    EXPECT_EQ(ReadFile(f.dir.File("casepost.out")), "casepost ran in " + f.dir.Path() + "\n");
    EXPECT_EQ(ReadFile(f.dir.File("response.cnt")),
              f.modelPath + "\r\n20\r\n 1  0  0  0  0  0 \r\n 0 \r\n0\r\n 1 \r\n 0.05 \r\n 0.1 \r\n");
    // Direction 1 only; the response file is rewritten in place and keeps
    // the older file's tail.
    const std::string response = ReadFile(f.File(".HS1"));
    EXPECT_EQ(response.size(), 100000u);
    EXPECT_EQ(response.substr(0, 2), std::string("\x04\x00", 2));
    EXPECT_EQ(response.back(), 'x');
    EXPECT_FALSE(Exists(f.File(".HS2")));
    // The options file's results case 20 wins over the command line's 7.
    EXPECT_TRUE(Exists(f.File(".L20")) && !Exists(f.File(".L7")));
}

// A single-mode run hands over that mode alone: one row of the frequency
// table, with that mode's circular frequency, and one block.
TEST(BatchRun, ASingleModeRunWritesThatModesRowAlone) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    EditOptions(f.modelPath, "3", [](ResponseOptions& o) {
        o.SingleMode = 2;
        o.DirOn(3) = 1;
    });
    ASSERT_EQ(f.Run("3/7/").status, 0);
    for (const char* suffix : {".HS1", ".HS3"}) {
        SCOPED_TRACE(suffix);
        const ResponseFile hs(f.File(suffix));
        ASSERT_EQ(hs.Rows(), 1);
        EXPECT_EQ(hs.bytes.size(), hs.Size());
        EXPECT_EQ(hs.Omega(1), 20.0f);  // the root of mode 2's eigenvalue 400
        EXPECT_EQ(hs.Damping(1), 0.05f);
        EXPECT_EQ(hs.Equation(1, 4, 3), 6);
    }
}

// Dates and times are the local ones, day before month.
TEST(BatchRun, TheResultsCarryTheDateAndTimeOfTheRun) {
    ModelFixture f;
    f.WriteFrequencyCase();
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    SetClockSource([] { return std::time_t(1772600767); });  // 4 March 2026, 05:06:07 UTC
    testing::InProcessRun run(f.dir.Path(), "3/7/");
    SetClockSource(nullptr);
    const std::string results = ReadFile(f.File(".L20"));
    EXPECT_NE(results.find("\r\nLDATE,04/03/2026\r\nLTIME,05:06:07\r\n"), std::string::npos) << results;
    const std::string index = ReadFile(f.File(".220"));
    EXPECT_TRUE(index.find("04/03/2026") != std::string::npos && index.find("05:06:07") != std::string::npos);
    EXPECT_NE(ReadFile(f.File(".NSL")).find("04/03/2026 05:06:07"), std::string::npos);
}

// Node and mode numbers are 16-bit in the suite's files: 32,767 of either is
// the largest model they can describe, and it must run like any other.
TEST(BatchRun, ModelsAtTheCeilingOfTheFormatsRunThrough) {
    {
        // A one-column building of 32,767 nodes, two modes.
        const testing::ExampleModel model("--storeys 32766 --modes 2 --directions 1 --comb SRSS");
        ASSERT_EQ(model.Run("1/20/").status, 0);
        const ResponseFile hs(model.File(".HS1"));
        EXPECT_EQ(hs.Nodes(), 32767);
        EXPECT_EQ(hs.Rows(), 2);
        ASSERT_EQ(hs.bytes.size(), hs.Size());
        // The top node's x freedom, in the second block: equation 65,531 of
        // the building's 65,532.
        EXPECT_EQ(hs.Equation(2, 32767, 1), 65531);
    }
    {
        // The four-node frame with 32,767 modes, combined by SRSS.
        ModelFixture f;
        f.WriteStandInCasepost();
        EditOptions(f.modelPath, "3", [](ResponseOptions& o) { o.CombMethod = 0; });
        testing::FrequencyCaseData c = testing::FrameFrequencyCase();
        c.Eigenvalues.clear();
        c.Shapes.clear();
        for (int m = 1; m <= 32767; ++m) {
            c.Eigenvalues.push_back(100.0 + m);
            c.Shapes.push_back({0, 0.001f, 0, 0.002f, 0, 0.003f, 0});
        }
        WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
        ASSERT_EQ(f.Run("3/7/").status, 0);
        const ResponseFile hs(f.File(".HS1"));
        EXPECT_EQ(hs.Nodes(), 4);
        EXPECT_EQ(hs.Rows(), 32767);
        EXPECT_EQ(hs.bytes.size(), hs.Size());
    }
}

}  // namespace
}  // namespace tremodal
