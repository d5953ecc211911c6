#include "run/startup.h"

#include <cstdio>

#include "base/checked_math.h"
#include "base/file_system.h"
#include "base/host.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "input/node_coordinates.h"
#include "input/options_file.h"
#include "run/analysis_driver.h"

namespace tremodal {

void SplitCommandLine(RunState& state, const std::string& commandLine) {
    // Fields end at "/"; blanks are no separators, and whatever follows the
    // last "/" or the third field is ignored.
    int field = 0;
    std::string text;
    for (char c : commandLine) {
        if (c != '/') {
            text += c;
            continue;
        }
        ++field;
        if (field == 1) state.Options.OptionsNumber = text;
        if (field == 2) state.Options.ResultsCase = text;
        if (field == 3) state.RunPhase = RoundToI16(Val(text));
        text.clear();
    }
}

void ReadModelName(RunState& state) {
    ModelContext& m = state.Model;
    // Until MODEL.NAM is read, the model path is that of the name file
    // itself, so the log of a run that cannot find it is MODEL.NAM.LOG.
    m.ModelPath = m.FilesDir + "/MODEL.NAM";
    // Without Files1 the name file would be looked for at the root of the
    // file system: the setting is what is missing, and the user is told so.
    if (m.FilesDir.empty()) {
        const std::string settings = state.Ui->SettingsLocation("VARNEK");
        const std::string where = settings.empty() ? "the user settings" : settings;
        if (!settings.empty() && !FileExists(settings)) {
            Fail(kFileNotFound,
                 where + ": no such file; it must give Files1 in [Setup], the directory of MODEL.NAM");
        }
        Fail(kFileNotFound,
             where + ": Files1 is missing or empty in [Setup]; it names the directory of MODEL.NAM");
    }
    TextInput in(m.ModelPath);
    m.ModelPath = in.ReadTextField();
    m.ModelName = in.ReadTextField();
    in.Close();
}

void ReadModelSize(RunState& state) {
    ModelContext& m = state.Model;
    TextInput in(m.ModelPath + ".XSZ");
    in.ReadTextField();
    m.ModelName = in.ReadTextField();
    m.ModelTitle = in.ReadTextField();
    for (int i = 0; i < 3; ++i) in.ReadTextField();
    m.NumElements = in.ReadSingleField();
    in.ReadSingleField();
    m.NumNodes = in.ReadSingleField();
    in.ReadSingleField();
    for (int i = 0; i < 7; ++i) in.ReadTextField();
    m.UnitSystem = in.ReadI32Field();
    in.Close();
}

void ReadSuiteSettings(RunState& state) {
    ModelContext& m = state.Model;
    m.FilesDir = state.Ui->ReadSetting("VARNEK", "Setup", "Files1");
    m.ProgramDir = state.Ui->ReadSetting("VARNEK", "Setup", "Files2");
    m.HelpFile = m.ProgramDir + "/dynamic.chm";
}

void OpenModel(RunState& state, int& stage, const std::string& modelPath) {
    stage = kStageModel;
    if (modelPath.empty()) {
        ReadModelName(state);
    } else {
        state.Model.ModelPath = modelPath;
    }
    ReadModelSize(state);
    stage = kStageCoordinates;
    ReadNodeCoordinates(state);
}

std::string OptionsFileOf(const RunState& state, const std::string& number) {
    return state.Model.ModelPath + ".USM" + LTrim(number);
}

bool OpenOptionsSet(RunState& state, const std::string& number) {
    const std::string file = OptionsFileOf(state, number);
    if (!FileExists(file)) return false;
    state.Options.OptionsNumber = number;
    state.Options.OptionsFile = file;
    ReadOptions(state);
    return true;
}

StartOutcome Main(RunState& state, const std::string& commandLine) {
    int stage = kStageModel;
    try {
        ReadSuiteSettings(state);
        state.Options.ZpaHighestMode = 1;
        if (!commandLine.empty()) {
            SplitCommandLine(state, commandLine);
            state.BatchRun = 1;
        }
        OpenModel(state, stage);
        if (state.BatchRun != 1) {
            stage = kStageDialog;
            return StartOutcome::Dialog;
        }

        stage = kStageOptions;
        if (!OpenOptionsSet(state, state.Options.OptionsNumber)) {
            Fail(kFileNotFound, OptionsFileOf(state, state.Options.OptionsNumber) + ": no such file");
        }

        stage = kStageAnalysis;
        AnalyzeResponse(state);
        // casepost runs after every batch run that gets this far, also after a
        // first missing mass pass and after the single-mode guard stopped the
        // analysis; whether it starts is only seen by the child wait.
        LaunchCasepost(state);
        return StartOutcome::BatchWaiting;
    } catch (const Failure& failure) {
        HandleStartFailure(state, failure, stage);
        return StartOutcome::Ended;
    }
}

void NoteMissingCasepost(RunState& state) {
    const std::string program = state.Model.ProgramDir + "/casepost";
    if (ProgramExists(program)) return;
    state.Ui->Note(program +
                   ": no such program (Files2 in [Setup] names the folder of the suite's "
                   "programs); a batch run writes its results but starts nothing to post them");
}

void LaunchCasepost(RunState& state) {
    NoteMissingCasepost(state);
    state.Ui->StartChild(state.Model.ProgramDir + "/casepost");
    state.Timer1Enabled = true;
}

bool Timer1_Timer(RunState& state) {
    if (state.Ui->PollChild() == ChildState::Running) return false;
    state.Timer1Enabled = false;
    return state.BatchRun == 1;
}

namespace {

std::string LogLine(const RunState& state, const Failure& failure, int stage) {
    const i32 number = failure.Number();
    if (number == kFileNotFound && stage == kStageOptions) {
        return "TREMODAL - Response Options File (" + state.Options.OptionsNumber + ") Not Found ";
    }
    if (number == kFileNotFound && stage == kStageAnalysis) {
        return "TREMODAL - Frequency or Response Spectrum Data not Found";
    }
    return "TREMODAL  E" + PrintItem(number) + "; L; " + PrintItem(i32(stage)) +
           "; Model Or Data; Error - Check; Model & Re - Run; ";
}

// What failed, in plain words. A reader's failure names its file; the node
// count is the size file's; a fault of the arithmetic is told with the files
// whose analysis met it.
std::string PlainReason(const RunState& state, const Failure& failure, int stage) {
    const std::string what = failure.what();
    const ModelContext& m = state.Model;
    if (!m.ModelPath.empty() && what.find(m.ModelPath) != std::string::npos) return what;
    if (stage == kStageCoordinates) {
        const std::string count = m.ModelPath + ".XSZ: the node count " + GeneralText(m.NumNodes);
        if (failure.Number() == kOverflow) return count + " is more than 32,767";
        if (failure.Number() == kSubscriptOutOfRange) return count + " is below 0";
        return count + ": " + what;
    }
    if (stage == kStageAnalysis) {
        return "the analysis of " + m.ModelPath + ".H" + LTrim(state.Options.FreqCase) +
               " with the options " + state.Options.OptionsFile + ": " + what;
    }
    return what;
}

}  // namespace

void HandleStartFailure(RunState& state, const Failure& failure, int stage) {
    if (state.BatchRun != 1) {
        state.Ui->ShowMessage(" E" + SignedText(i32(failure.Number())) + " L" + SignedText(i32(stage)) +
                                  "  Model or Data Error - Check Model & Re-Run",
                              "TREMODAL" + state.Model.ModelPath);
        return;
    }
    const std::string line = LogLine(state, failure, stage);
    // The log line goes to standard error too, for whoever runs the program by
    // hand, followed by what failed in plain words. A log that cannot be
    // opened must not fail the failure handler.
    std::fprintf(stderr, "%s\n%s\n", line.c_str(), PlainReason(state, failure, stage).c_str());
    // Without Files1 the log would land at the root of the file system.
    if (state.Model.FilesDir.empty()) return;
    try {
        PrintFile log(state.Model.ModelPath + ".LOG", TextMode::Append);
        log.Line(line);
        log.Close();
    } catch (const Failure& logFailure) {
        // The failure names the log and why it could not be written.
        std::fprintf(stderr, "%s\n", logFailure.what());
    }
}

}  // namespace tremodal
