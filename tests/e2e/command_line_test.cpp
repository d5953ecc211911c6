// What the programs say to the person who runs them: TreModal's own options,
// the hand-over to the windows program, and the example tool's options.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <tuple>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using namespace testing;

// TreModal loads no window system; a screen hands the run to the windows
// program beside it, and without that program a batch run still runs and
// only the charts are refused.
TEST(WindowsProgram, AScreenHandsTheRunOnAndABatchRunNeedsNone) {
    TempDir scratch;
    ASSERT_EQ(testing::RunCommand("ldd '" + std::string(TREMODAL_BIN) + "' > '" + scratch.File("ldd") + "'"),
              0);
    const std::string libraries = testing::ReadFile(scratch.File("ldd"));
    EXPECT_TRUE(libraries.find("libQt6Gui") == std::string::npos &&
                libraries.find("libQt6Widgets") == std::string::npos)
        << libraries;

    testing::ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    TempDir alone;  // TreModal on its own, without the windows program beside it
    std::filesystem::copy_file(TREMODAL_BIN, alone.File("TreModal"));
    for (const std::string& program : {std::string(TREMODAL_BIN), alone.File("TreModal")}) {
        std::filesystem::remove(f.File(".L20"));
        const ProgramRun run = RunProgram(program, f.dir.Path(), "3/20/", {.screen = true});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_TRUE(Exists(f.File(".L20")));
    }
    for (const std::string plots : {" --plots '", " --plots='"}) {
        const ProgramRun charts =
            RunProgram(alone.File("TreModal"), f.dir.Path(), "--report 3" + plots + alone.File("plots") + "'",
                       {.screen = true});
        EXPECT_EQ(std::tuple(charts.status, charts.err),
                  std::tuple(2, "TreModal: --plots needs tremodal-view beside TreModal\n"));
    }
}

TEST(OwnOptions, HelpAndVersionAnswerOnStandardOutputAndOthersAreUsageErrors) {
    testing::ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    const ProgramRun help = f.Run("--help");
    EXPECT_EQ(std::tuple(help.status, help.err), std::tuple(0, ""));
    EXPECT_TRUE(help.out.starts_with("Usage: TreModal OPTIONS/CASE/[PHASE/]")) << help.out;
    for (const char* part :
         {"--report N", "--version", "the dialog", "VARNEK/VARNEK.conf", "Files1=", "3/7/1/"})
        EXPECT_NE(help.out.find(part), std::string::npos) << part;
    EXPECT_EQ(f.Run("-h").out, help.out);
    // No arguments and no screen: the dialog is refused with the words and
    // the status of the manual page, with settings or without them.
    const TempDir none;
    for (const ProgramRun& dialog : {f.Run(""), f.Run("", {.config = none.Path()})})
        EXPECT_EQ(std::tuple(dialog.status, dialog.err.substr(0, 44)),
                  std::tuple(2, "TreModal: the dialog needs a screen (DISPLAY"));
    const ProgramRun version = f.Run("--version");
    EXPECT_EQ(std::tuple(version.status, version.out, version.err), std::tuple(0, "TreModal 3-2-7\n", ""));
    // Never a batch run: nothing is read, run or logged.
    for (const char* arguments : {"--frobnicate", "--help 3/7/", "--version=2", "--"}) {
        const ProgramRun wrong = f.Run(arguments);
        EXPECT_TRUE(wrong.status == 2 && wrong.out.empty() && wrong.err.starts_with("TreModal: ") &&
                    std::count(wrong.err.begin(), wrong.err.end(), '\n') == 1 &&
                    wrong.err.find("TreModal --help") != std::string::npos)
            << arguments << ": " << wrong.err;
    }
    EXPECT_FALSE(Exists(f.File(".LOG")) || Exists(f.File(".L20")) || Exists(f.dir.File("casepost.out")));
}

TEST(ExampleTool, HelpUsageErrorsAndMissingValuesWriteNothing) {
    TempDir cwd;
    const ProgramRun help = RunProgram(EXAMPLE_TOOL, cwd.Path(), "--help", {.config = cwd.Path()});
    EXPECT_EQ(std::tuple(help.status, help.err), std::tuple(0, ""));
    EXPECT_TRUE(help.out.starts_with("usage: make_example_model DIR [options]\n")) << help.out;
    EXPECT_NE(help.out.find("--storeys N"), std::string::npos);
    for (const auto& [arguments, error] : std::initializer_list<std::pair<const char*, const char*>>{
             {"model --frobnicate 3", "unknown option --frobnicate"},
             {"model -h", "unknown option -h"},
             {"model --storeys", "--storeys needs a value"},
             {"--name --storeys 3 model", "--name needs a value"},
             {"--storeys 3", "no directory given"},
             {"model --comb MEAN", "--comb is SRSS, CQC, GROUP, DSM or ABS"},
         }) {
        const ProgramRun wrong = RunProgram(EXAMPLE_TOOL, cwd.Path(), arguments, {.config = cwd.Path()});
        EXPECT_EQ(
            std::tuple(wrong.status, wrong.out, wrong.err),
            std::tuple(2, "",
                       "make_example_model: " + std::string(error) + "; see make_example_model --help\n"));
        // No model, and no folder named after an option.
        EXPECT_TRUE(std::filesystem::is_empty(cwd.Path())) << arguments;
    }
}

}  // namespace
}  // namespace tremodal
