#include "dialog/commands.h"

#include <strings.h>

#include <filesystem>
#include <vector>

#include "base/file_system.h"
#include "base/host.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "dialog/dialog_host.h"
#include "input/options_file.h"
#include "run/analysis_driver.h"
#include "run/startup.h"

namespace tremodal {

namespace {

constexpr const char* kMessageTitle = "TREMODAL";

void Message(RunState& state, const std::string& text) { state.Ui->ShowMessage(text, kMessageTitle); }

// Runs a command so that no failure ends the dialog: the user sees the
// failure's number and what failed, and can go on.
template <class Command>
void Guarded(RunState& state, Command command) {
    try {
        command();
    } catch (const Failure& failure) {
        Message(state, "Error " + GeneralText(i32(failure.Number())) + " - " + failure.what());
    }
}

// The wait cursor for as long as a run blocks the program, also when it fails.
class WaitCursor {
public:
    explicit WaitCursor(DialogHost& screen) : screen_(screen) { screen_.SetWaitCursor(true); }
    ~WaitCursor() { screen_.SetWaitCursor(false); }
    WaitCursor(const WaitCursor&) = delete;
    WaitCursor& operator=(const WaitCursor&) = delete;

private:
    DialogHost& screen_;
};

std::string EditorProgram(const RunState& state) { return state.Model.ProgramDir + "/VarnekEdit"; }

void StartEditor(const RunState& state, const Form2& form, const std::string& file) {
    const std::string program = EditorProgram(state);
    if (!form.Screen->StartEditor(program, file)) Fail(kFileNotFound, "cannot start the editor " + program);
}

// The model's .XBT file, whatever the case of its suffix; empty when there
// is none. Of two that differ only in case the first in byte order counts.
// Whatever stands under the name counts: a directory, a FIFO or a device
// there is found, and its read then fails as any file that cannot be opened.
std::string FindJobExtensionFile(const std::string& modelPath) {
    namespace fs = std::filesystem;
    const fs::path model(modelPath);
    const std::string base = model.filename().string() + ".";
    const fs::path dir = model.has_parent_path() ? model.parent_path() : fs::path(".");
    std::string found;
    std::error_code error;
    for (fs::directory_iterator it(dir, error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (name.size() != base.size() + 3 || name.compare(0, base.size(), base) != 0) continue;
        if (strcasecmp(name.c_str() + base.size(), "XBT") != 0) continue;
        if (found.empty() || name < found) found = name;
    }
    return found.empty() ? std::string() : (dir / found).string();
}

void AppendBatchJob(const RunState& state, const std::vector<std::string>& lines) {
    PrintFile job(BatchJobFile(state), TextMode::Append);
    for (const std::string& line : lines) job.Line(line);
    job.Close();
}

void RunCommand1(RunState& state, Form2& form, int Index) {
    ResponseOptions& o = state.Options;
    state.List1.clear();
    // The options file is written first, whichever button was pressed.
    i16 Act = 0;
    SaveDef(state, form, Act);
    // A cancelled number prompt does not spare the user the guards' messages.
    if (!FileExists(state.Model.ModelPath + ".H" + LTrim(o.FreqCase))) {
        Message(state, "Frequency Case does not Exist");
        return;
    }
    if (o.SpectrumFile.empty() || !FileExists(o.SpectrumFile)) {
        Message(state, "Response Spectrum Data not Found");
        return;
    }
    if (o.ResultsCase.empty()) {
        Message(state, "Results Case not Defined");
        return;
    }
    if (Act == 1) return;
    ChangeDirectory(state.Model.FilesDir);

    const std::string job = "TreModal " + o.OptionsNumber + "/" + o.ResultsCase + "/";
    switch (Index) {
        case 0:
        case 2: {
            {
                WaitCursor wait(*form.Screen);
                state.RunPhase = Index == 0 ? 2 : 1;
                AnalyzeResponse(state);
            }
            form.List1Visible = form.CopyVisible = true;
            form.Screen->Refresh();
            // The first pass of a missing mass analysis leaves nothing to post.
            if (Index == 0) LaunchCasepost(state);
            break;
        }
        case 1:
            AppendBatchJob(state, {o.MissMassOn == 1 ? job + "2/" : job});
            break;
        case 3:
            if (o.MissMassOn != 1) {
                Message(state, "Missing Mass not active - Use Batch button");
                return;
            }
            // The load cases, then the suite's solver on them; Batch adds the
            // second pass that reads them back.
            AppendBatchJob(state, {job + "1/", "LOADA C0", "OFRAME"});
            break;
    }
}

void OpenOptions(RunState& state, Form2& form) {
    ResponseOptions& o = state.Options;
    const std::string answer = state.Ui->Prompt("Load Response Spectrum Options",
                                                "Enter Spectral Response Options Number", o.OptionsNumber);
    if (answer.empty()) return;
    if (!OpenOptionsSet(state, Trim(answer))) {
        Message(state, "Option file does not exist");
        return;
    }
    SetOpt(state, form);
}

void ChooseSpectrumFile(RunState& state, Form2& form, int Index) {
    std::string& file = state.Options.SpectrumFile;
    if (file.empty()) file = state.Model.ModelPath + ".URS1";
    // The answer counts at once: a cancelled prompt leaves no curve.
    file = state.Ui->Prompt("Response Spectrum", "Enter Response Spectrum Filename", file);
    if (file.empty()) return;
    if (Index == 0) StartEditor(state, form, file);
    if (Index == 1 && !FileExists(file)) {
        Message(state, "Response File Does not Exist");
        file.clear();
    }
    // A new curve the editor has not saved yet is not shown.
    if (FileExists(file)) form.Label5 = "Respons File:" + file;
}

}  // namespace

void SaveDef(RunState& state, const Form2& form, i16& Act) {
    ResponseOptions& o = state.Options;
    SetDef(state, form);
    if (o.OptionsNumber.empty()) o.OptionsNumber = "1";
    const std::string answer = state.Ui->Prompt("Save Response Spectrum Options",
                                                "Enter Spectral Response Options Number ", o.OptionsNumber);
    if (answer.empty()) {
        Act = 1;
        return;
    }
    o.OptionsNumber = Trim(answer);
    o.OptionsFile = state.Model.ModelPath + ".USM" + o.OptionsNumber;
    if (form.optComb >= 0 && form.optComb <= 4) {
        o.CombName = kOptCombCaptions[form.optComb];
        o.CombMethod = i16(form.optComb);
    }
    WriteOptionsFile(state);
}

std::string BatchJobFile(const RunState& state) {
    std::string extension = "BRM";
    const std::string extensionFile = FindJobExtensionFile(state.Model.ModelPath);
    if (!extensionFile.empty()) {
        TextInput in(extensionFile);
        extension = in.ReadTextField();
        in.Close();
    }
    return state.Model.ModelPath + "." + LTrim(extension);
}

void Command1_Click(RunState& state, Form2& form, int Index) {
    Guarded(state, [&] { RunCommand1(state, form, Index); });
}

void Command2_Click(RunState&, Form2& form) { form.Screen->EndProgram(); }

void Command3_Click(RunState& state, Form2& form, int Index) {
    Guarded(state, [&] { ChooseSpectrumFile(state, form, Index); });
}

void Command4_Click(RunState&, Form2& form) {
    form.List1Visible = !form.List1Visible;
    form.CopyVisible = form.List1Visible;
}

void Command5_Click(RunState& state, Form2& form, int Index) {
    Guarded(state, [&] {
        if (Index == 0) {
            OpenOptions(state, form);
        } else {
            i16 Act = 0;
            SaveDef(state, form, Act);
        }
    });
}

void Command6_Click(RunState& state, Form2& form) {
    Guarded(state, [&] {
        state.Options.FreqCase = LTrim(form.txtCase[0]);
        StartEditor(state, form, state.Model.ModelPath + ".USD" + state.Options.FreqCase);
    });
}

void Copy_Click(RunState& state, Form2& form) {
    std::string text;
    for (const std::string& line : state.List1) text += line + "\r";
    if (!text.empty()) form.Screen->SetClipboardText(text);
}

}  // namespace tremodal
