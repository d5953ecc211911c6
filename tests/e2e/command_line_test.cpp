// What the programs say to the person who runs them: TreModal's own options,
// the plain line behind a failed batch run's log line, a run without
// settings, and the example tool's options.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "support/frequency_case_fixture.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::ModelFixture;
using testing::ReadFile;
using testing::RunCommand;
using testing::TempDir;
using testing::WriteFile;

struct Output {
    int status;
    std::string out;
    std::string err;
};

// Runs a program in dir with the given settings directory and no screen
// (or, with `screen`, DISPLAY set and the offscreen platform standing in for
// the window system), catching both streams.
Output RunIn(const TempDir& dir, const std::string& program, const std::string& arguments,
             const std::string& config, bool screen = false) {
    const std::string display =
        screen ? "DISPLAY=:99 QT_QPA_PLATFORM=offscreen" : "-u DISPLAY -u WAYLAND_DISPLAY";
    const std::string command = "cd '" + dir.Path() + "' && env " + display + " XDG_CONFIG_HOME='" + config +
                                "' timeout 60 '" + program + "' " + arguments + " > '" + dir.File("out.txt") +
                                "' 2> '" + dir.File("err.txt") + "' < /dev/null";
    Output result;
    result.status = RunCommand(command);
    result.out = ReadFile(dir.File("out.txt"));
    result.err = ReadFile(dir.File("err.txt"));
    std::filesystem::remove(dir.File("out.txt"));
    std::filesystem::remove(dir.File("err.txt"));
    return result;
}

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
    WriteFile(f.File(".USM1"), testing::kFreshOptionsFile);
    const std::string config = testing::WriteSettingsIn(f.dir.Path());
    const Output onScreen = RunIn(f.dir, TREMODAL_BIN, "1/20/", config, true);
    EXPECT_EQ(onScreen.status, 0) << onScreen.err;
    EXPECT_TRUE(Exists(f.File(".L20")));

    // TreModal on its own, without the windows program beside it.
    TempDir alone;
    const std::string program = alone.File("TreModal");
    std::filesystem::copy_file(TREMODAL_BIN, program);
    std::filesystem::remove(f.File(".L20"));
    const Output batch = RunIn(f.dir, program, "1/20/", config, true);
    EXPECT_EQ(batch.status, 0) << batch.err;
    EXPECT_TRUE(Exists(f.File(".L20")));
    const Output charts =
        RunIn(f.dir, program, "--report 1 --plots '" + alone.File("plots") + "'", config, true);
    EXPECT_EQ(charts.status, 2);
    EXPECT_EQ(charts.err, "TreModal: --plots needs tremodal-view beside TreModal\n");
}

TEST(OwnOptions, HelpAndVersionAnswerOnStandardOutputAndOthersAreUsageErrors) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    const std::string config = testing::WriteSettingsIn(f.dir.Path());

    const Output help = RunIn(f.dir, TREMODAL_BIN, "--help", config);
    EXPECT_EQ(help.status, 0);
    EXPECT_EQ(help.err, "");
    EXPECT_EQ(help.out.rfind("Usage: TreModal OPTIONS/CASE/[PHASE/]", 0), 0u) << help.out;
    for (const char* part :
         {"--report N", "--version", "the dialog", "VARNEK/VARNEK.conf", "Files1=", "3/7/1/"}) {
        EXPECT_NE(help.out.find(part), std::string::npos) << part;
    }

    const Output version = RunIn(f.dir, TREMODAL_BIN, "--version", config);
    EXPECT_EQ(version.status, 0);
    EXPECT_EQ(version.out, "TreModal 3-2-7\n");
    EXPECT_EQ(version.err, "");

    // Never a batch run: nothing is read, run or logged.
    for (const char* arguments : {"--frobnicate", "--help 3/7/", "--version=2", "--"}) {
        const Output wrong = RunIn(f.dir, TREMODAL_BIN, arguments, config);
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
    const Output help = RunIn(cwd, EXAMPLE_TOOL, "--help", cwd.Path());
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
        const Output wrong = RunIn(cwd, EXAMPLE_TOOL, c.arguments, cwd.Path());
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
