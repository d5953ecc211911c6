// What the programs say to the person who runs them: TreModal's own options,
// the hand-over to the windows program, and the example tool's options.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::ModelFixture;
using testing::ProgramRun;
using testing::ReadFile;
using testing::RunCommand;
using testing::RunProgram;
using testing::TempDir;

std::size_t Lines(const std::string& text) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

// TreModal loads no window system; a screen hands the run to the windows
// program beside it, and without that program a batch run still runs and
// only the charts are refused.
TEST(WindowsProgram, AScreenHandsTheRunOnAndABatchRunNeedsNone) {
    TempDir scratch;
    ASSERT_EQ(RunCommand("ldd '" + std::string(TREMODAL_BIN) + "' > '" + scratch.File("ldd.txt") + "'"), 0);
    const std::string libraries = ReadFile(scratch.File("ldd.txt"));
    EXPECT_EQ(libraries.find("libQt6Gui"), std::string::npos) << libraries;
    EXPECT_EQ(libraries.find("libQt6Widgets"), std::string::npos) << libraries;

    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    const ProgramRun onScreen = f.Run("3/20/", {.screen = true});
    EXPECT_EQ(onScreen.status, 0) << onScreen.err;
    EXPECT_TRUE(Exists(f.File(".L20")));

    // TreModal on its own, without the windows program beside it.
    TempDir alone;
    const std::string program = alone.File("TreModal");
    std::filesystem::copy_file(TREMODAL_BIN, program);
    std::filesystem::remove(f.File(".L20"));
    const ProgramRun batch = RunProgram(program, f.dir.Path(), "3/20/", {.screen = true});
    EXPECT_EQ(batch.status, 0) << batch.err;
    EXPECT_TRUE(Exists(f.File(".L20")));
    for (const std::string plots : {" --plots '", " --plots='"}) {
        const ProgramRun charts = RunProgram(
            program, f.dir.Path(), "--report 3" + plots + alone.File("plots") + "'", {.screen = true});
        EXPECT_EQ(charts.status, 2);
        EXPECT_EQ(charts.err, "TreModal: --plots needs tremodal-view beside TreModal\n");
    }
}

TEST(OwnOptions, HelpAndVersionAnswerOnStandardOutputAndOthersAreUsageErrors) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    const ProgramRun help = f.Run("--help");
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(help.out.rfind("Usage: TreModal OPTIONS/CASE/[PHASE/]", 0), 0u) << help.out;
    for (const char* part :
         {"--report N", "--version", "the dialog", "VARNEK/VARNEK.conf", "Files1=", "3/7/1/"}) {
        EXPECT_NE(help.out.find(part), std::string::npos) << part;
    }

    const ProgramRun version = f.Run("--version");
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, "TreModal 3-2-7\n");
    EXPECT_EQ(version.err, "");

    // Never a batch run: nothing is read, run or logged.
    for (const char* arguments : {"--frobnicate", "--help 3/7/", "--version=2", "--"}) {
        const ProgramRun wrong = f.Run(arguments);
        EXPECT_EQ(wrong.status, 2) << arguments;
        EXPECT_EQ(wrong.out, "") << arguments;
        EXPECT_EQ(Lines(wrong.err), 1u) << wrong.err;
        EXPECT_EQ(wrong.err.rfind("TreModal: ", 0), 0u) << wrong.err;
        EXPECT_NE(wrong.err.find("TreModal --help"), std::string::npos) << wrong.err;
    }
    EXPECT_FALSE(Exists(f.File(".LOG")));
    EXPECT_FALSE(Exists(f.File(".L20")));
    EXPECT_FALSE(Exists(f.dir.File("casepost.out")));
}

TEST(ExampleTool, HelpUsageErrorsAndMissingValuesWriteNothing) {
    TempDir cwd;
    const ProgramRun help = RunProgram(EXAMPLE_TOOL, cwd.Path(), "--help", {.config = cwd.Path()});
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(help.out.rfind("usage: make_example_model DIR [options]\n", 0), 0u) << help.out;
    EXPECT_NE(help.out.find("--storeys N"), std::string::npos);

    struct Case {
        const char* arguments;
        const char* error;
    } cases[] = {
        {"model --frobnicate 3", "unknown option --frobnicate"},
        {"model -h", "unknown option -h"},
        {"model --storeys", "--storeys needs a value"},
        {"--name --storeys 3 model", "--name needs a value"},
        {"--storeys 3", "no directory given"},
        {"model --comb MEAN", "--comb is SRSS, CQC, GROUP, DSM or ABS"},
    };
    for (const Case& c : cases) {
        const ProgramRun wrong = RunProgram(EXAMPLE_TOOL, cwd.Path(), c.arguments, {.config = cwd.Path()});
        EXPECT_EQ(wrong.status, 2) << c.arguments;
        EXPECT_EQ(wrong.out, "") << c.arguments;
        EXPECT_EQ(wrong.err,
                  std::string("make_example_model: ") + c.error + "; see make_example_model --help\n");
        // No model, and no folder named after an option.
        EXPECT_TRUE(std::filesystem::is_empty(cwd.Path())) << c.arguments;
    }
}

}  // namespace
}  // namespace tremodal
