#include "run/startup.h"

#include <gtest/gtest.h>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::FakeHost;
using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

TEST(CommandLine, FieldsEndAtSlashesAndTheRestIsDropped) {
    struct Case {
        const char* line;
        const char* options;
        const char* results;
        int phase;
    } cases[] = {
        {"3/7/2/", "3", "7", 2},
        {"3/7", "3", "", 0},
        {"3/7/", "3", "7", 0},
        {"3", "", "", 0},
        {" 3 / 7 /1/9/", " 3 ", " 7 ", 1},
        {"3/7/2.5/", "3", "7", 2},
        {"3/7/3.5/x", "3", "7", 4},
        {"3/7/abc/", "3", "7", 0},
    };
    for (const Case& c : cases) {
        RunState s;
        SplitCommandLine(s, c.line);
        EXPECT_EQ(s.Options.OptionsNumber, c.options) << c.line;
        EXPECT_EQ(s.Options.ResultsCase, c.results) << c.line;
        EXPECT_EQ(s.RunPhase, c.phase) << c.line;
    }
    RunState s;
    EXPECT_THROW(SplitCommandLine(s, "3/7/40000/"), Failure);
}

}  // namespace
}  // namespace tremodal
