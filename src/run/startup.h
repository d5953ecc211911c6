// Start-up of the program: the suite's directories from the user settings,
// the command line, the current model from MODEL.NAM, its size file and node
// coordinates; then either a batch run, which ends by itself once casepost
// has ended, or the dialog. One failure handler covers the whole sequence.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

enum class StartOutcome {
    BatchWaiting,  // casepost started; the child wait ticks until it ends
    Dialog,        // the dialog is to be shown
    Ended,         // the failure handler ended the program
};

// The stage of the start-up sequence a failure is reported with.
enum StartStage : int {
    kStageModel = 0,         // settings, command line, MODEL.NAM, .XSZ
    kStageCoordinates = 34,  // node coordinates, forming the options file name
    kStageOptions = 101,     // reading the options
    kStageAnalysis = 102,    // analysis and launch of casepost
    kStageDialog = 103,      // showing the dialog
};

// The whole start-up. commandLine is every argument joined by one blank;
// empty for a dialog run. state.Ui must be set.
StartOutcome Main(RunState& state, const std::string& commandLine);

// Splits a batch command line into OptionsNumber, ResultsCase and RunPhase.
void SplitCommandLine(RunState& state, const std::string& commandLine);

// Reads MODEL.NAM from FilesDir, then the model's .XSZ size file.
void ReadModelName(RunState& state);
void ReadModelSize(RunState& state);

// The suite's directories from the user settings: FilesDir, ProgramDir and
// the help file beside the programs.
void ReadSuiteSettings(RunState& state);

// Opens the model as every run starts on it: the model that MODEL.NAM in
// FilesDir names (or modelPath, when given), its size file and its node
// coordinates. stage follows the steps for the failure handler.
void OpenModel(RunState& state, int& stage, const std::string& modelPath = "");

// The file of options set `number` of the model in hand: ModelPath + ".USM"
// + the number without its leading blanks.
std::string OptionsFileOf(const RunState& state, const std::string& number);

// Opens options set `number` for a batch run, the report or the dialog: when
// its file exists, OptionsNumber and OptionsFile name it and the options are
// read from it. Returns false, changing nothing, when there is no such file.
bool OpenOptionsSet(RunState& state, const std::string& number);

// Starts the suite's casepost from ProgramDir and enables Timer1, which
// follows the new child only. The same for a batch run and the dialog.
void LaunchCasepost(RunState& state);

// Tells the person when ProgramDir holds no casepost to start: the results
// are written, but nothing posts them.
void NoteMissingCasepost(RunState& state);

// One tick of Timer1: polls the child without waiting. Returns true when the
// program is to end (the child has ended in a batch run).
bool Timer1_Timer(RunState& state);

// The last-resort failure handler of start-up: a message box in a dialog run,
// one line in the model's .LOG file (and on standard error) in a batch run.
void HandleStartFailure(RunState& state, const Failure& failure, int stage);

}  // namespace tremodal
