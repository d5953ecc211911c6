// The commands of the dialog on a real model in a temporary directory, with
// the prompts answered, the messages caught and the screen recorded.
#include "dialog/commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "run/startup.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::kFreshOptionsFile;
using testing::ReadFile;
using testing::WriteFile;
using Lines = std::vector<std::string>;

struct DialogRun {
    testing::ModelFixture model;
    testing::FakeHost host;
    testing::FakeDialogHost screen;
    RunState state;
    Form2 form;

    // The dialog on the model, with what a run needs filled in when asked:
    // a frequency case, a results case and the curve.
    explicit DialogRun(bool filledIn = true) {
        model.WriteFrequencyCase();
        host.Files1 = model.dir.Path();
        host.Files2 = model.dir.File("bin");
        state.Ui = &host;
        if (Main(state, "") != StartOutcome::Dialog) throw std::runtime_error("start-up failed");
        form.Screen = &screen;
        Form_Load(state, form);
        if (!filledIn) return;
        form.txtCase[0] = "1";
        form.txtCase[1] = "20";
        state.Options.SpectrumFile = model.File(".URS1");
    }
    // A run moves into the model's directory, which goes with the test.
    ~DialogRun() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    void Click1(int index, const std::string& answer) {
        host.PromptAnswers = {answer};
        Command1_Click(state, form, index);
    }
};

TEST(DialogCommands, ExecuteWritesTheOptionsRunsShowsTheReportAndStartsCasepost) {
    DialogRun run;
    run.Click1(0, " 4 ");
    EXPECT_EQ(run.host.Messages, Lines{});
    EXPECT_EQ(run.host.PromptQuestions,
              Lines{"Save Response Spectrum Options|Enter Spectral Response Options Number |1"});
    EXPECT_EQ(ReadFile(run.model.File(".USM4")), kFreshOptionsFile);
    EXPECT_TRUE(Exists(run.model.File(".L20")));
    EXPECT_EQ(std::filesystem::current_path(), run.model.dir.Path());
    EXPECT_FALSE(run.state.List1.empty());
    EXPECT_TRUE(run.form.List1Visible && run.form.CopyVisible);
    EXPECT_EQ(run.screen.Cursor, (std::vector<bool>{true, false}));
    EXPECT_EQ(run.screen.Refreshes, 1);
    EXPECT_EQ(run.host.ChildrenStarted, Lines{run.model.dir.File("bin/casepost")});
    EXPECT_FALSE(Timer1_Timer(run.state));  // in the dialog the child wait only stops the timer
    EXPECT_FALSE(run.state.Timer1Enabled);

    Copy_Click(run.state, run.form);
    std::string expected;
    for (const std::string& line : run.state.List1) expected += line + "\r";
    EXPECT_EQ(run.screen.Clipboard, Lines{expected});

    // Execute(Partial), missing mass off: the first pass runs, no results case, no casepost.
    std::filesystem::remove(run.model.File(".L20"));
    run.Click1(2, "4");
    EXPECT_EQ(run.state.RunPhase, 1);
    EXPECT_FALSE(run.state.List1.empty());
    EXPECT_FALSE(Exists(run.model.File(".L20")));
    EXPECT_EQ(run.host.ChildrenStarted.size(), 1u);
}

TEST(DialogCommands, GuardsSpeakInTheirOrderAfterTheOptionsAreWritten) {
    DialogRun run(false);
    run.Click1(0, "5");  // no frequency case number: FRAME.H
    run.form.txtCase[0] = "1";
    run.Click1(0, "5");  // no curve
    run.state.Options.SpectrumFile = run.model.File(".URS1");
    run.Click1(0, "5");  // no results case
    run.form.txtCase[1] = "20";
    run.Click1(0, "");  // prompt cancelled: silence
    EXPECT_EQ(run.host.Messages, (Lines{"Frequency Case does not Exist", "Response Spectrum Data not Found",
                                        "Results Case not Defined"}));
    EXPECT_EQ(run.host.MessageTitles, Lines(3, "TREMODAL"));
    EXPECT_TRUE(Exists(run.model.File(".USM5")));
    EXPECT_FALSE(Exists(run.model.File(".L20")));

    run.form.txtCase[0] = "8";
    run.Click1(1, "");  // a cancelled prompt does not spare the guards
    EXPECT_EQ(run.host.Messages.back(), "Frequency Case does not Exist");
    run.form.txtCase[0] = "1";
    run.Click1(3, "5");
    EXPECT_EQ(run.host.Messages.back(), "Missing Mass not active - Use Batch button");
    EXPECT_FALSE(Exists(run.model.File(".BRM")));
    EXPECT_TRUE(run.host.ChildrenStarted.empty());
}

TEST(DialogCommands, BatchButtonsAppendJobsToTheJobFileNamedByTheXbtFile) {
    DialogRun run;
    run.Click1(1, "3");
    run.Click1(1, "3");
    EXPECT_EQ(ReadFile(run.model.File(".BRM")), "TreModal 3/20/\r\nTreModal 3/20/\r\n");

    WriteFile(run.model.File(".xBt"), " B2,ignored\r\n");
    run.form.chkMissMass = 1;
    run.Click1(3, "3");
    run.Click1(1, "3");
    EXPECT_EQ(ReadFile(run.model.File(".B2")),
              "TreModal 3/20/1/\r\nLOADA C0\r\nOFRAME\r\nTreModal 3/20/2/\r\n");
    EXPECT_EQ(run.host.Messages, Lines{});
}

TEST(DialogCommands, FailuresAreShownWithTheirNumberAndTheDialogGoesOn) {
    DialogRun run;
    const std::string good = ReadFile(run.model.File(".H1"));
    WriteFile(run.model.File(".H1"), good.substr(0, 10));
    run.Click1(0, "1");
    ASSERT_EQ(run.host.Messages.size(), 1u);
    EXPECT_EQ(run.host.Messages[0].rfind("Error 62 - ", 0), 0u) << run.host.Messages[0];
    EXPECT_EQ(run.screen.Cursor, (std::vector<bool>{true, false}));
    WriteFile(run.model.File(".H1"), good);
    run.Click1(0, "1");
    EXPECT_EQ(run.host.Messages.size(), 1u);
    EXPECT_TRUE(Exists(run.model.File(".L20")));

    // A field that is not a number: named, no prompt, nothing run.
    std::filesystem::remove(run.model.File(".L20"));
    run.form.txtTDur = "ten";
    run.Click1(0, "1");
    EXPECT_EQ(run.host.Messages.back(), "Error 13 - DSM Duration Secs: \"ten\" is not a number");
    EXPECT_EQ(run.host.PromptQuestions.size(), 2u);
    EXPECT_FALSE(Exists(run.model.File(".L20")));

    // An options file that cannot be created: the options stay in memory.
    run.form.txtTDur = "12";
    std::filesystem::create_directory(run.model.File(".USM6"));
    run.host.PromptAnswers = {"6"};
    Command5_Click(run.state, run.form, 1);
    EXPECT_EQ(run.host.Messages.back().rfind("Error 75 - ", 0), 0u) << run.host.Messages.back();
    EXPECT_EQ(run.state.Options.Duration, 12.0f);

    run.screen.EditorStarts = false;
    Command6_Click(run.state, run.form);
    EXPECT_EQ(run.host.Messages.back(),
              "Error 53 - cannot start the editor " + run.model.dir.File("bin/VarnekEdit"));
}

TEST(DialogCommands, OpenOptionsAsksWithoutTheTrailingBlankAndShowsTheFile) {
    DialogRun run(false);
    std::string stored = kFreshOptionsFile;
    stored.replace(stored.find(", .05"), 5, ", .07");
    WriteFile(run.model.File(".USM8"), stored);
    run.host.PromptAnswers = {"9", " 8 "};
    Command5_Click(run.state, run.form, 0);
    EXPECT_EQ(run.host.Messages, Lines{"Option file does not exist"});
    EXPECT_EQ(run.state.Options.OptionsNumber, "");
    Command5_Click(run.state, run.form, 0);
    EXPECT_EQ(run.host.PromptQuestions[1],
              "Load Response Spectrum Options|Enter Spectral Response Options Number|");
    EXPECT_EQ(run.state.Options.OptionsNumber, "8");
    EXPECT_EQ(run.form.txtDampR, "0.07");
    EXPECT_EQ(run.form.Label5, "Respons File:" + run.model.File(".URS1"));

    run.host.PromptAnswers = {"2"};
    Command5_Click(run.state, run.form, 1);
    EXPECT_EQ(ReadFile(run.model.File(".USM2")), stored);
}

TEST(DialogCommands, CurveAndDampingGoToTheEditorWithTheFileAsItsOneArgument) {
    DialogRun run(false);
    const std::string editor = run.model.dir.File("bin/VarnekEdit");
    const std::string curve = run.model.File(".URS1");
    run.host.PromptAnswers = {curve, run.model.File(".URS9"), "", run.model.File(".URS2")};
    Command3_Click(run.state, run.form, 1);
    EXPECT_EQ(run.form.Label5, "Respons File:" + curve);
    Command3_Click(run.state, run.form, 1);  // a name that does not exist
    EXPECT_EQ(run.host.Messages, Lines{"Response File Does not Exist"});
    EXPECT_EQ(run.state.Options.SpectrumFile, "");
    Command3_Click(run.state, run.form, 0);  // cancelled: no curve, no editor
    EXPECT_EQ(run.state.Options.SpectrumFile, "");
    Command3_Click(run.state, run.form, 0);  // a new curve: the label waits for it
    EXPECT_EQ(run.form.Label5, "Respons File:" + curve);
    EXPECT_EQ(run.host.PromptQuestions[2], "Response Spectrum|Enter Response Spectrum Filename|" + curve);

    run.form.txtCase[0] = " 2";
    Command6_Click(run.state, run.form);
    EXPECT_EQ(run.screen.EditorsStarted,
              (Lines{editor + " " + run.model.File(".URS2"), editor + " " + run.model.File(".USD2")}));

    Command4_Click(run.state, run.form);
    EXPECT_TRUE(run.form.List1Visible && run.form.CopyVisible);
    Command4_Click(run.state, run.form);
    EXPECT_FALSE(run.form.List1Visible || run.form.CopyVisible);
    Copy_Click(run.state, run.form);  // an empty report leaves the clipboard alone
    EXPECT_TRUE(run.screen.Clipboard.empty());
}

TEST(DialogCommands, WithoutAScreenADialogRunSaysSoAndFails) {
    testing::ModelFixture model;
    EXPECT_EQ(model.RunTreModal(""), 2);
    EXPECT_NE(model.Stderr().find("the dialog needs a screen"), std::string::npos) << model.Stderr();
}

}  // namespace
}  // namespace tremodal
