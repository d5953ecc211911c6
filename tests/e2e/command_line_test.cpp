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

TEST(FailedBatchRun, StandardErrorHasTheLogLineThenTheFileAndWhatIsWrong) {
    ModelFixture f;
    f.WriteStandInCasepost();
    const std::string generic = " ; Model Or Data; Error - Check; Model & Re - Run; ";
    struct Case {
        std::string log;
        std::string plain;
    };
    auto expectRun = [&](const std::string& commandLine, const Case& c) {
        std::filesystem::remove(f.File(".LOG"));
        EXPECT_EQ(f.RunTreModal(commandLine), 1) << c.plain;
        EXPECT_EQ(f.Stderr(), c.log + "\n" + c.plain + "\n");
        EXPECT_EQ(ReadFile(f.File(".LOG")), c.log + "\r\n");
    };

    expectRun("3/7/",
              {"TREMODAL - Frequency or Response Spectrum Data not Found", f.File(".H1") + ": no such file"});
    expectRun("8/7/",
              {"TREMODAL - Response Options File (8) Not Found ", f.File(".USM8") + ": no such file"});

    // The fixture's case: a 40-byte header, 2 eigenvalues of 8 bytes, the
    // shapes of 2 modes x 4 nodes x 6 freedoms x 8 bytes = 384, the mass form
    // word: 444 bytes before the mass count, whose 6 masses end at byte 496.
    f.WriteFrequencyCase();
    const std::string whole = ReadFile(f.File(".H1"));
    ASSERT_EQ(whole.size(), 496u);
    WriteFile(f.File(".H1"), whole.substr(0, 150));
    expectRun("3/7/", {"TREMODAL  E 62 ; L;  102" + generic,
                       f.File(".H1") + ": ends at byte 150 where its header promises 444"});
    WriteFile(f.File(".H1"), whole.substr(0, 492));
    expectRun("3/7/", {"TREMODAL  E 62 ; L;  102" + generic,
                       f.File(".H1") + ": ends at byte 492 where its mass count promises 496"});
    WriteFile(f.File(".H1"), whole.substr(0, 12));
    expectRun("3/7/", {"TREMODAL  E 62 ; L;  102" + generic,
                       f.File(".H1") + ": ends at byte 12, inside its 40-byte header"});
    // 2,400 modes announced and two eigenvalues there, with no zero to end
    // the list: the list alone ends at 40 + 19,200.
    WriteFile(f.File(".H1"), whole.substr(0, 8) + std::string("\x60\x09\0\0", 4) + whole.substr(12, 44));
    expectRun("3/7/", {"TREMODAL  E 62 ; L;  102" + generic,
                       f.File(".H1") + ": ends at byte 56 where its header promises 19,240"});
    // A frame without mass: the arithmetic fails, told with the files it
    // worked on.
    testing::FrequencyCaseData massless;
    massless.CaseNodes = 4;
    massless.NumDof = 6;
    massless.Eigenvalues = {100};
    massless.NodeDof = {{0, 0, 0, 0, 0, 0}, {1, 0, 2, 0, 0, 0}, {3, 0, 4, 0, 0, 0}, {5, 0, 6, 0, 0, 0}};
    massless.Shapes = {{0, 0.25f, 0, 0.5f, 0, 0.75f, 0}};
    massless.Masses = {0, 0, 0, 0, 0, 0};
    WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(massless));
    expectRun("3/7/", {"TREMODAL  E 11 ; L;  102" + generic, "the analysis of " + f.File(".H1") +
                                                                 " with the options " + f.File(".USM3") +
                                                                 ": division by zero"});
    f.WriteFrequencyCase();

    // The size file: cut after its fifth line, and a node count no single holds.
    const std::string size = ReadFile(f.File(".XSZ"));
    std::size_t fifth = 0;
    for (int i = 0; i < 5; ++i) fifth = size.find('\n', fifth) + 1;
    WriteFile(f.File(".XSZ"), size.substr(0, fifth));
    expectRun("3/7/", {"TREMODAL  E 62 ; L;  0" + generic,
                       f.File(".XSZ") + ": ends after line 5, before all its fields are read"});
    WriteFile(f.File(".XSZ"), "a\r\nFRAME\r\nt\r\n1\r\n2\r\n3\r\n5,0,1e40,0\r\n");
    expectRun("3/7/", {"TREMODAL  E 6 ; L;  0" + generic,
                       f.File(".XSZ") + ", line 7: \"1e40\" is too large for a single-precision field"});
    WriteFile(f.File(".XSZ"),
              "a\r\nFRAME\r\nt\r\n1\r\n2\r\n3\r\n5,0,-5,0\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n1\r\n");
    expectRun("3/7/",
              {"TREMODAL  E 9 ; L;  34" + generic, f.File(".XSZ") + ": the node count -5 is below 0"});
    WriteFile(f.File(".XSZ"), "");
    expectRun("3/7/",
              {"TREMODAL  E 62 ; L;  0" + generic, f.File(".XSZ") + ": is empty where fields are expected"});
}

TEST(FailedBatchRun, ALogThatCannotBeWrittenIsNamedLast) {
    ModelFixture f;
    // The model path points into a directory that does not exist, so neither
    // its size file nor its log can be opened.
    const std::string model = f.dir.File("missing/FRAME");
    WriteFile(f.dir.File("MODEL.NAM"), "\"" + model + "\",FRAME\r\n");
    EXPECT_EQ(f.RunTreModal("3/7/"), 1);
    EXPECT_EQ(f.Stderr(), "TREMODAL  E 53 ; L;  0 ; Model Or Data; Error - Check; Model & Re - Run; \n" +
                              model + ".XSZ: no such file\n" + model +
                              ".LOG: cannot be opened (No such file or directory)\n");
}

TEST(FailedBatchRun, WithoutSettingsNamesTheSettingsFileAndLogsNothing) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    TempDir config;
    TempDir cwd;
    // Whatever may stand at the root before: the run must leave it as it was,
    // also when it runs as root and could write there.
    const std::string rootLog = "/MODEL.NAM.LOG";
    const bool rootLogBefore = Exists(rootLog);
    const std::string rootLogText = rootLogBefore ? ReadFile(rootLog) : "";
    const std::string line = "TREMODAL  E 53 ; L;  0 ; Model Or Data; Error - Check; Model & Re - Run; \n";
    const std::string settings = config.File("VARNEK/VARNEK.conf");

    Output run = RunIn(cwd, TREMODAL_BIN, "3/7/", config.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, line + settings +
                           ": no such file; it must give Files1 in [Setup], the directory of MODEL.NAM\n");

    std::filesystem::create_directories(config.File("VARNEK"));
    WriteFile(settings, "[Setup]\nFiles2=" + f.dir.File("bin") + "\n");
    run = RunIn(cwd, TREMODAL_BIN, "3/7/", config.Path());
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err, line + settings +
                           ": Files1 is missing or empty in [Setup]; it names the directory of MODEL.NAM\n");

    EXPECT_EQ(Exists(rootLog), rootLogBefore);
    if (rootLogBefore) {
        EXPECT_EQ(ReadFile(rootLog), rootLogText);
    }
    // Nor anywhere else: the working directory stays empty.
    EXPECT_TRUE(std::filesystem::is_empty(cwd.Path()));
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
