// The dialog's logic without a window: its controls against ResponseOptions,
// the key filters, and the commands behind its buttons on the example model
// in a temporary directory, with the prompts answered, the messages caught
// and the screen recorded.
#include "dialog/form2.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "dialog/commands.h"
#include "input/options_file.h"
#include "run/startup.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::ReadFile;
using testing::WriteFile;
using Lines = std::vector<std::string>;

// The dialog on the example model, with what a run needs filled in: a
// frequency case, a results case and the curve.
struct Dialog : testing::ExampleModel {
    testing::FakeHost host;
    testing::FakeDialogHost screen;
    RunState state;
    Form2 form;

    Dialog() {
        host.Files1 = dir.Path();
        host.Files2 = dir.File("bin");
        state.Ui = &host;
        if (Main(state, "") != StartOutcome::Dialog) throw std::runtime_error("start-up failed");
        form.Screen = &screen;
        Form_Load(state, form);
        form.txtCase[0] = "1";
        form.txtCase[1] = "20";
        state.Options.SpectrumFile = File(".URS1");
    }
    // A run moves into the model's directory, which goes with the test.
    ~Dialog() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    void Click1(int index, const std::string& answer) {
        host.PromptAnswers = {answer};
        Command1_Click(state, form, index);
    }
};

TEST(Form2, SetDefRoundsModesDownTrimsCasesAndSurvivesAZeroVelocity) {
    RunState state;
    Form2 form;
    form.txtCase = {"  2", " 20 ", " 7", "2.7", "-2.5"};
    form.txtFact[2] = "0";
    form.optComb = -1;
    state.Options.CombMethod = 4;
    form.optInterp = 1;
    SetDef(state, form);
    const ResponseOptions& o = state.Options;
    EXPECT_EQ(o.FreqCase + "|" + o.ResultsCase + "|" + o.MissMassStartCase, "2|20 |7");
    EXPECT_EQ(o.SingleMode, 2);
    EXPECT_EQ(o.ForceSignMode, -3);
    for (int d = 4; d <= 6; ++d) EXPECT_EQ(o.DirFactor(d), 0.0f) << "direction " << d;
    EXPECT_EQ(o.CombMethod, 4);  // no button selected: the method stays
    EXPECT_EQ(o.InterpMethod, 1);
}

// Digits, the sign, the point, the blank, the comma, the slash and control
// keys pass (all below ":"), of the letters only E; the factor fields raise
// a small e, the case and angle fields drop it. \xe9 is a letter beyond ASCII.
TEST(Form2, KeyFiltersPassNumbersAndCapitalEOnly) {
    const struct {
        void (*filter)(i16&);
        const char* passed;
    } filters[] = {{txtCurve_KeyPress, "0123456789-+./, \bEE"}, {txtDir_KeyPress, "0123456789-+./, \bE"}};
    for (const auto& row : filters) {
        std::string passed;
        for (char c : std::string("0123456789-+./, \beEDFx:;=?~\xe9")) {
            i16 key = static_cast<unsigned char>(c);
            row.filter(key);
            if (key != 0) passed += char(key);
        }
        EXPECT_EQ(passed, row.passed);
    }
}

TEST(Form2Commands, RunButtonsRunOrAppendBatchJobsAfterWritingTheOptions) {
    Dialog d;
    d.Click1(0, " 4 ");
    EXPECT_EQ(d.host.PromptQuestions,
              Lines{"Save Response Spectrum Options|Enter Spectral Response Options Number |1"});
    EXPECT_EQ(ReadFile(d.File(".USM4")), testing::kFreshOptionsFile);
    EXPECT_TRUE(Exists(d.File(".L20")));
    EXPECT_EQ(std::filesystem::current_path(), d.dir.Path());
    EXPECT_FALSE(d.state.List1.empty());
    EXPECT_TRUE(d.form.List1Visible && d.form.CopyVisible);
    EXPECT_EQ(d.screen.Cursor, (std::vector<bool>{true, false}));
    EXPECT_EQ(d.screen.Refreshes, 1);
    EXPECT_EQ(d.host.ChildrenStarted, Lines{d.dir.File("bin/casepost")});
    EXPECT_FALSE(Timer1_Timer(d.state));  // in the dialog the child's end only stops the wait

    // Execute(Partial), missing mass off: the first pass runs, no results case, no casepost.
    std::filesystem::remove(d.File(".L20"));
    d.Click1(2, "4");
    EXPECT_EQ(d.state.RunPhase, 1);
    EXPECT_FALSE(d.state.List1.empty());
    EXPECT_FALSE(Exists(d.File(".L20")));
    EXPECT_EQ(d.host.ChildrenStarted.size(), 1u);

    // Batch: the jobs appended to the job file, the .XBT file naming it.
    d.Click1(1, "3");
    d.Click1(1, "3");
    EXPECT_EQ(ReadFile(d.File(".BRM")), "TreModal 3/20/\r\nTreModal 3/20/\r\n");

    WriteFile(d.File(".xBt"), " B2,ignored\r\n");
    d.form.chkMissMass = 1;
    d.Click1(3, "3");
    d.Click1(1, "3");
    EXPECT_EQ(ReadFile(d.File(".B2")), "TreModal 3/20/1/\r\nLOADA C0\r\nOFRAME\r\nTreModal 3/20/2/\r\n");
    EXPECT_EQ(d.host.Messages, Lines{});
}

// The last report is cleared and the options are written first, whichever
// button; then the guards speak in their order, also after a cancelled
// prompt, and nothing runs.
TEST(Form2Commands, GuardsSpeakInTheirOrderAfterTheOptionsAreWritten) {
    const struct {
        const char *freqCase, *resultsCase, *answer, *message;
        bool curve;
        int button;
    } guards[] = {
        {"", "20", "5", "Frequency Case does not Exist", true, 0},
        {"1", "20", "5", "Response Spectrum Data not Found", false, 0},
        {"1", "", "5", "Results Case not Defined", true, 2},
        {"1", "20", "", "", true, 0},
        {"8", "20", "", "Frequency Case does not Exist", true, 1},
        {"1", "20", "5", "Missing Mass not active - Use Batch button", true, 3},
    };
    for (const auto& row : guards) {
        SCOPED_TRACE(row.message);
        Dialog d;
        d.form.txtCase[0] = row.freqCase;
        d.form.txtCase[1] = row.resultsCase;
        if (!row.curve) d.state.Options.SpectrumFile.clear();
        d.state.List1 = {"the last report"};
        d.Click1(row.button, row.answer);
        EXPECT_EQ(d.host.Messages, *row.message ? Lines{row.message} : Lines{});
        EXPECT_EQ(d.host.MessageTitles, Lines(d.host.Messages.size(), "TREMODAL"));
        EXPECT_EQ(Exists(d.File(".USM5")), *row.answer != 0);
        EXPECT_FALSE(Exists(d.File(".L20")) || Exists(d.File(".BRM")) || !d.host.ChildrenStarted.empty() ||
                     !d.state.List1.empty());
    }
}

// A failure inside a command is shown with its number and the dialog goes
// on, with the normal cursor back. A field that is not a number fails before
// anything is taken or asked; a later failure leaves the options in memory.
// Each row types 0.9 into the vertical factor and then presses Execute
// under options number 6, unless its own command has failed already.
TEST(Form2Commands, FailuresAreShownWithTheirNumberAndTheDialogGoesOn) {
    const struct {
        const char* message;  // <DIR> for the model's directory
        std::function<void(Dialog&)> act;
        bool taken;  // the options taken and their number asked
    } failures[] = {
        {"Error 62 - <DIR>/SHEAR.H1: ends at byte 10, inside its 40-byte header",
         [](Dialog& d) { WriteFile(d.File(".H1"), ReadFile(d.File(".H1")).substr(0, 10)); }, true},
        {"Error 13 - DSM Duration Secs: \"ten\" is not a number", [](Dialog& d) { d.form.txtTDur = "ten"; },
         false},
        {"Error 13 - Damping Ratio: \"abc\" is not a number", [](Dialog& d) { d.form.txtDampR = "abc"; },
         false},
        {"Error 13 - Principal Direction Angle: \"1/2\" is not a number",
         [](Dialog& d) { d.form.txtDir = "1/2"; }, false},
        {"Error 6 - Use only one mode: \"32768\" is out of range",
         [](Dialog& d) { d.form.txtCase[3] = "32768"; }, false},
        {"Error 75 - <DIR>/SHEAR.USM6: is not a regular file",
         [](Dialog& d) { std::filesystem::create_directory(d.File(".USM6")); }, true},
        {"Error 53 - cannot start the editor <DIR>/bin/VarnekEdit",
         [](Dialog& d) { Command6_Click(d.state, d.form); }, false},
    };
    for (const auto& row : failures) {
        SCOPED_TRACE(row.message);
        Dialog d;
        d.form.txtFact[1] = "0.9";
        d.screen.EditorStarts = false;
        row.act(d);
        if (d.host.Messages.empty()) d.Click1(0, "6");
        EXPECT_EQ(d.host.Messages.size() == 1 ? testing::MaskedRunText(d.host.Messages[0], d.dir.Path()) : "",
                  row.message);
        EXPECT_EQ(d.state.Options.DirFactor(2), row.taken ? 0.9f : 0.0f);
        EXPECT_EQ(d.host.PromptQuestions.size(), row.taken ? 1u : 0u);
        EXPECT_EQ(d.screen.Cursor.size() % 2, 0u) << "the wait cursor stays";
    }
}

TEST(Form2Commands, CurveDampingOptionsViewerAndClipboardCommands) {
    Dialog d;
    const std::string editor = d.dir.File("bin/VarnekEdit"), curve = d.File(".URS1");
    d.host.PromptAnswers = {curve, d.File(".URS9"), "", d.File(".URS2")};
    Command3_Click(d.state, d.form, 1);
    EXPECT_EQ(d.form.Label5, "Respons File:" + curve);
    Command3_Click(d.state, d.form, 1);  // a name that does not exist
    EXPECT_EQ(d.host.Messages, Lines{"Response File Does not Exist"});
    EXPECT_EQ(d.state.Options.SpectrumFile, "");
    Command3_Click(d.state, d.form, 0);  // cancelled: no curve, no editor
    EXPECT_EQ(d.state.Options.SpectrumFile, "");
    Command3_Click(d.state, d.form, 0);  // a new curve: the label waits for it
    EXPECT_EQ(d.form.Label5, "Respons File:" + curve);
    EXPECT_EQ(d.host.PromptQuestions[2], "Response Spectrum|Enter Response Spectrum Filename|" + curve);
    d.form.txtCase[0] = " 2";
    Command6_Click(d.state, d.form);
    EXPECT_EQ(d.screen.EditorsStarted,
              (Lines{editor + " " + d.File(".URS2"), editor + " " + d.File(".USD2")}));

    // Open Options: the number asked without a trailing blank, the file
    // shown but for a curve that has gone.
    std::string stored = testing::kFreshOptionsFile;
    stored.replace(stored.find(", .05"), 5, ", .07").replace(stored.find("URS1"), 4, "URS7");
    WriteFile(d.File(".USM8"), stored);
    d.host.PromptAnswers = {"9", " 8 "};
    Command5_Click(d.state, d.form, 0);
    EXPECT_EQ(d.host.Messages.back(), "Option file does not exist");
    EXPECT_EQ(d.state.Options.OptionsNumber, "");
    Command5_Click(d.state, d.form, 0);
    EXPECT_EQ(d.host.PromptQuestions[4],
              "Load Response Spectrum Options|Enter Spectral Response Options Number|");
    EXPECT_EQ(d.state.Options.OptionsNumber, "8");
    EXPECT_EQ(d.form.txtDampR, "0.07");
    EXPECT_EQ(d.form.Label5, "Respons File:" + curve);
    d.host.PromptAnswers = {"2"};
    Command5_Click(d.state, d.form, 1);
    EXPECT_EQ(ReadFile(d.File(".USM2")), stored);

    // A method and a curve kind with no button: those controls keep what
    // they showed, the rest are set all the same; shear and accelerations
    // are no options of the file.
    std::string odd = testing::kFreshOptionsFile;
    for (auto [from, to] : {std::pair{"Accel  , 2", "Accel  , 5"},
                            {"Method               , 1", "Method  , 7"},
                            {"active)        , 0", "active), 1"},
                            {"mode)          , 1", "mode), 0"}})
        odd.replace(odd.find(from), std::string(from).size(), to);
    WriteFile(d.File(".USM7"), odd);
    d.form.Label5.clear();
    d.form.optComb = 3;
    d.form.chkShear = d.form.chkAccel = 1;
    d.host.PromptAnswers = {"7"};
    Command5_Click(d.state, d.form, 0);
    EXPECT_EQ(d.host.Messages.back(), "Error 9 - Spectrum type 5 of the options names no curve kind");
    EXPECT_EQ(d.form.Label5, "Respons File:" + curve);
    EXPECT_EQ((std::vector<int>{d.form.optComb, d.form.optSpect, d.form.chkMissMass, d.form.chkShear,
                                d.form.chkAccel, d.form.chkZPA}),
              (std::vector<int>{3, 2, 1, 1, 1, 0}));

    Command4_Click(d.state, d.form);
    EXPECT_TRUE(d.form.List1Visible && d.form.CopyVisible);
    Command4_Click(d.state, d.form);
    EXPECT_FALSE(d.form.List1Visible || d.form.CopyVisible);
    d.state.List1.clear();
    Copy_Click(d.state, d.form);  // an empty report leaves the clipboard alone
    d.state.List1 = {"a", " b"};
    Copy_Click(d.state, d.form);
    EXPECT_EQ(d.screen.Clipboard, Lines{"a\r b\r"});
}

TEST(Form2Commands, WithoutAScreenADialogRunSaysSoAndFails) {
    testing::ExampleModel model;
    const testing::ProgramRun run = testing::RunTreModal(model.dir.Path(), "");
    EXPECT_EQ(run.status, 2);
    EXPECT_NE(run.err.find("the dialog needs a screen"), std::string::npos) << run.err;
}

}  // namespace
}  // namespace tremodal
