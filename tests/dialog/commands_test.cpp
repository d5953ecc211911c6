// The commands of the dialog on a real model in a temporary directory, with
// the prompts answered, the messages caught and the screen recorded.
#include "dialog/commands.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "runcontrol/startup.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::FakeDialogHost;
using testing::FakeHost;
using testing::kFreshOptionsFile;
using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

using Lines = std::vector<std::string>;

struct DialogRun {
    ModelFixture model;
    FakeHost host;
    FakeDialogHost screen;
    RunState state;
    Form2 form;

    DialogRun() {
        model.WriteFrequencyCase();
        host.Files1 = model.dir.Path();
        host.Files2 = model.dir.File("bin");
        state.Ui = &host;
        if (Main(state, "") != StartOutcome::Dialog) throw std::runtime_error("start-up failed");
        form.Screen = &screen;
        Form_Load(state, form);
    }
    // A run moves into the model's directory, which goes with the test.
    ~DialogRun() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    // What every run needs: a frequency case, a results case and the curve.
    void FillIn() {
        form.txtCase[0] = "1";
        form.txtCase[1] = "20";
        state.Options.SpectrumFile = model.File(".URS1");
    }
    void Answer(const Lines& answers) { host.PromptAnswers = answers; }
};

TEST(DialogCommands, ExecuteWritesTheOptionsRunsShowsTheReportAndStartsCasepost) {
    DialogRun run;
    run.FillIn();
    run.Answer({" 4 "});
    Command1_Click(run.state, run.form, 0);

    EXPECT_EQ(run.host.Messages, Lines{});
    EXPECT_EQ(run.host.PromptQuestions,
              Lines{"Save Response Spectrum Options|Enter Spectral Response Options Number |1"});
    EXPECT_EQ(ReadFile(run.model.File(".USM4")), kFreshOptionsFile);
    EXPECT_EQ(run.state.Options.OptionsNumber, "4");
    EXPECT_EQ(run.state.Options.CombName, "CQC");
    EXPECT_EQ(run.state.RunPhase, 2);
    EXPECT_TRUE(Exists(run.model.File(".L20")));
    EXPECT_TRUE(Exists(run.model.dir.File("response.cnt")));
    EXPECT_EQ(std::filesystem::current_path(), run.model.dir.Path());
    EXPECT_FALSE(run.state.List1.empty());
    EXPECT_TRUE(run.form.List1Visible);
    EXPECT_TRUE(run.form.CopyVisible);
    EXPECT_EQ(run.screen.Cursor, (std::vector<bool>{true, false}));
    EXPECT_EQ(run.screen.Refreshes, 1);
    EXPECT_EQ(run.host.ChildrenStarted, Lines{run.model.dir.File("bin/casepost")});
    EXPECT_TRUE(run.state.Timer1Enabled);
    // In the dialog the child wait only stops the timer.
    EXPECT_FALSE(Timer1_Timer(run.state));
    EXPECT_FALSE(run.state.Timer1Enabled);

    // Copy: every line ended by a carriage return alone.
    Copy_Click(run.state, run.form);
    ASSERT_EQ(run.screen.Clipboard.size(), 1u);
    const std::string& text = run.screen.Clipboard[0];
    EXPECT_EQ(text.find('\n'), std::string::npos);
    EXPECT_EQ(std::count(text.begin(), text.end(), '\r'), std::ptrdiff_t(run.state.List1.size()));
    EXPECT_EQ(text.substr(0, run.state.List1[0].size() + 1), run.state.List1[0] + "\r");

    // Execute(Partial) runs the first pass only: no results case, no casepost.
    std::filesystem::remove(run.model.File(".L20"));
    run.Answer({"4"});
    Command1_Click(run.state, run.form, 2);
    EXPECT_EQ(run.host.Messages, Lines{});
    EXPECT_EQ(run.state.RunPhase, 1);
    EXPECT_FALSE(run.state.List1.empty());
    EXPECT_FALSE(Exists(run.model.File(".L20")));
    EXPECT_EQ(run.host.ChildrenStarted.size(), 1u);
}

TEST(DialogCommands, GuardsSpeakInTheirOrderAfterTheOptionsAreWritten) {
    DialogRun run;
    run.Answer({"5", "5", "5", ""});
    Command1_Click(run.state, run.form, 0);  // no frequency case number: FRAME.H
    run.form.txtCase[0] = "1";
    Command1_Click(run.state, run.form, 0);  // no curve
    run.state.Options.SpectrumFile = run.model.File(".URS1");
    Command1_Click(run.state, run.form, 0);  // no results case
    run.form.txtCase[1] = "20";
    Command1_Click(run.state, run.form, 0);  // prompt cancelled: silence
    EXPECT_EQ(run.host.Messages,
              (Lines{"Frequency Case does not Exist", "Response Spectrum Data not Found", "Results Case not Defined"}));
    EXPECT_EQ(run.host.MessageTitles, (Lines(3, "TREMODAL")));
    EXPECT_TRUE(Exists(run.model.File(".USM5")));
    EXPECT_FALSE(Exists(run.model.File(".L20")));
    EXPECT_TRUE(run.host.ChildrenStarted.empty());

    // A cancelled prompt does not spare the guards.
    run.form.txtCase[0] = "8";
    run.Answer({""});
    Command1_Click(run.state, run.form, 1);
    EXPECT_EQ(run.host.Messages.back(), "Frequency Case does not Exist");

    run.form.txtCase[0] = "1";
    run.Answer({"5"});
    Command1_Click(run.state, run.form, 3);
    EXPECT_EQ(run.host.Messages.back(), "Missing Mass not active - Use Batch button");
    EXPECT_FALSE(Exists(run.model.File(".BRM")));
}

TEST(DialogCommands, BatchButtonsAppendJobsToTheJobFileNamedByTheXbtFile) {
    DialogRun run;
    run.FillIn();
    run.Answer({"3", "3"});
    Command1_Click(run.state, run.form, 1);
    Command1_Click(run.state, run.form, 1);
    EXPECT_EQ(ReadFile(run.model.File(".BRM")), "TreModal 3/20/\r\nTreModal 3/20/\r\n");

    WriteFile(run.model.File(".xBt"), " B2,ignored\r\nmore\r\n");
    run.form.chkMissMass = 1;
    run.Answer({"3", "3"});
    Command1_Click(run.state, run.form, 3);
    Command1_Click(run.state, run.form, 1);
    EXPECT_EQ(ReadFile(run.model.File(".B2")), "TreModal 3/20/1/\r\nLOADA C0\r\nOFRAME\r\nTreModal 3/20/2/\r\n");
    EXPECT_EQ(run.host.Messages, Lines{});
}

TEST(DialogCommands, AFailedRunIsShownWithItsNumberAndTheNextRunWorks) {
    DialogRun run;
    run.FillIn();
    const std::string good = ReadFile(run.model.File(".H1"));
    WriteFile(run.model.File(".H1"), good.substr(0, 10));
    run.Answer({"1"});
    Command1_Click(run.state, run.form, 0);
    ASSERT_EQ(run.host.Messages.size(), 1u);
    EXPECT_EQ(run.host.Messages[0].rfind("Error 62 - ", 0), 0u) << run.host.Messages[0];
    EXPECT_EQ(run.screen.Cursor, (std::vector<bool>{true, false}));
    EXPECT_TRUE(run.host.ChildrenStarted.empty());

    WriteFile(run.model.File(".H1"), good);
    run.Answer({"1"});
    Command1_Click(run.state, run.form, 0);
    EXPECT_EQ(run.host.Messages.size(), 1u);
    EXPECT_TRUE(Exists(run.model.File(".L20")));

    // A field that is not a number: named, no prompt, nothing written or run.
    std::filesystem::remove(run.model.File(".L20"));
    run.form.txtTDur = "ten";
    Command1_Click(run.state, run.form, 0);
    EXPECT_EQ(run.host.Messages.back(), "Error 13 - DSM Duration Secs: \"ten\" is not a number");
    EXPECT_EQ(run.host.PromptQuestions.size(), 2u);
    EXPECT_FALSE(Exists(run.model.File(".L20")));

    // An options file that cannot be created keeps the options in memory.
    run.form.txtTDur = "12";
    std::filesystem::create_directory(run.model.File(".USM6"));
    run.Answer({"6"});
    Command5_Click(run.state, run.form, 1);
    EXPECT_EQ(run.host.Messages.back().rfind("Error 75 - ", 0), 0u) << run.host.Messages.back();
    EXPECT_EQ(run.state.Options.Duration, 12.0f);
}

TEST(DialogCommands, OpenAndSaveOptionsAskTheirOwnQuestions) {
    DialogRun run;
    run.Answer({""});
    Command5_Click(run.state, run.form, 1);
    EXPECT_FALSE(Exists(run.model.File(".USM1")));

    std::string stored = kFreshOptionsFile;
    stored.replace(stored.find(", .05"), 5, ", .07");
    WriteFile(run.model.File(".USM8"), stored);
    run.form.chkShear = 1;
    run.Answer({"9", " 8 "});
    Command5_Click(run.state, run.form, 0);
    EXPECT_EQ(run.host.Messages, Lines{"Option file does not exist"});
    EXPECT_EQ(run.state.Options.OptionsNumber, "1");
    Command5_Click(run.state, run.form, 0);
    EXPECT_EQ(run.host.PromptQuestions,
              (Lines{"Save Response Spectrum Options|Enter Spectral Response Options Number |1",
                     "Load Response Spectrum Options|Enter Spectral Response Options Number|1",
                     "Load Response Spectrum Options|Enter Spectral Response Options Number|1"}));
    EXPECT_EQ(run.state.Options.OptionsNumber, "8");
    EXPECT_EQ(run.form.txtDampR, "0.07");
    EXPECT_EQ(run.form.txtCase[1], "20");
    EXPECT_EQ(run.form.Label5, "Respons File:" + run.model.File(".URS1"));
    EXPECT_EQ(run.form.chkShear, 1);

    run.Answer({"2"});
    Command5_Click(run.state, run.form, 1);
    EXPECT_EQ(run.host.PromptQuestions.back(),
              "Save Response Spectrum Options|Enter Spectral Response Options Number |8");
    EXPECT_EQ(ReadFile(run.model.File(".USM2")), stored);
}

TEST(DialogCommands, CurveAndDampingGoToTheEditorWithTheFileAsItsOneArgument) {
    DialogRun run;
    const std::string editor = run.model.dir.File("bin/VarnekEdit");
    const std::string curve = run.model.File(".URS1");
    run.Answer({curve, run.model.File(".URS9"), "", run.model.File(".URS2")});
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
    EXPECT_EQ(run.screen.EditorsStarted, (Lines{editor + " " + run.model.File(".URS2"), editor + " " + run.model.File(".USD2")}));
    EXPECT_EQ(run.state.Options.FreqCase, "2");

    run.screen.EditorStarts = false;
    Command6_Click(run.state, run.form);
    EXPECT_EQ(run.host.Messages.back(), "Error 53 - cannot start the editor " + editor);
}

TEST(DialogCommands, ViewerToggleEmptyCopyAndClose) {
    DialogRun run;
    Command4_Click(run.state, run.form);
    EXPECT_TRUE(run.form.List1Visible && run.form.CopyVisible);
    Command4_Click(run.state, run.form);
    EXPECT_FALSE(run.form.List1Visible || run.form.CopyVisible);
    Copy_Click(run.state, run.form);
    EXPECT_TRUE(run.screen.Clipboard.empty());
    Command2_Click(run.state, run.form);
    EXPECT_TRUE(run.screen.Ended);
}

TEST(DialogCommands, WithoutAScreenTheDialogRunSaysSoAndFails) {
    ModelFixture model;
    EXPECT_NE(model.RunTreModal(""), 0);
    EXPECT_NE(model.Stderr().find("needs a screen"), std::string::npos) << model.Stderr();
}

}  // namespace
}  // namespace tremodal
