#include "report/report_run.h"

#include <filesystem>
#include <memory>

#include "base/file_system.h"
#include "base/number_text.h"
#include "base/text_files.h"
#include "modal/response_curve.h"
#include "run/analysis_driver.h"
#include "run/startup.h"

namespace tremodal {

const char* const kReportUsage = "usage: TreModal --report N [--model PATH] [--csv DIR] [--plots DIR]";

std::string ParseReportArguments(const std::vector<std::string>& args, ReportRequest& request) {
    request = ReportRequest{};
    if (args.empty()) return "--report needs an options number";
    if (args[0].empty() || args[0].starts_with("-"))
        return "--report needs an options number, not \"" + args[0] + "\"";
    request.OptionsNumber = args[0];
    for (std::size_t i = 1; i < args.size(); ++i) {
        std::string name = args[i];
        std::string value;
        bool hasValue = false;
        if (const std::size_t eq = name.find('='); name.starts_with("--") && eq != std::string::npos) {
            value = name.substr(eq + 1);
            name.resize(eq);
            hasValue = true;
        }
        std::string* target = nullptr;
        if (name == "--model") target = &request.ModelPath;
        if (name == "--csv") target = &request.CsvDir;
        if (name == "--plots") target = &request.PlotsDir;
        if (!target) return "unknown argument \"" + args[i] + "\"";
        if (!hasValue) {
            if (i + 1 >= args.size()) return name + " needs a value";
            value = args[++i];
        }
        if (value.empty()) return name + " needs a value";
        if (!target->empty()) return name + " is given twice";
        *target = value;
    }
    return "";
}

std::string RecordingHost::ReadSetting(const std::string& application, const std::string& section,
                                       const std::string& key) {
    return machine_.ReadSetting(application, section, key);
}

void RecordingHost::ShowMessage(const std::string& text, const std::string&) { Messages.push_back(text); }

std::string RecordingHost::Prompt(const std::string&, const std::string&, const std::string&) { return ""; }

void RecordingHost::StartChild(const std::string&) {}

ChildState RecordingHost::PollChild() { return ChildState::Ended; }

void RecordingHost::Note(const std::string& text) { Notes.push_back(text); }

namespace {

// A failure of a reader names the file it read; say which step it was.
[[noreturn]] void FailIn(const std::string& step, const Failure& failure) {
    throw Failure(failure.Number(), step + ": " + failure.what());
}

}  // namespace

RunFigures RunReport(RunState& s, RecordingHost& host, const ReportRequest& request) {
    s.Ui = &host;
    // As a batch run starts, but in memory: nothing is written, no missing
    // mass case is read or written, and messages wait for the summary.
    s.BatchRun = 1;
    s.RunPhase = 0;
    s.WriteFiles = false;
    s.Options.ZpaHighestMode = 1;
    s.Options.OptionsNumber = request.OptionsNumber;
    ReadSuiteSettings(s);
    if (request.ModelPath.empty() && s.Model.FilesDir.empty()) {
        Fail(kFileNotFound,
             "no current model: the setting Files1 (the folder of MODEL.NAM) is empty; "
             "name the model with --model PATH");
    }
    try {
        int stage = 0;
        OpenModel(s, stage, request.ModelPath);
    } catch (const Failure& failure) {
        FailIn("model " + s.Model.ModelPath, failure);
    }

    ResponseOptions& o = s.Options;
    if (!OpenOptionsSet(s, request.OptionsNumber)) {
        Fail(kFileNotFound,
             "options set " + o.OptionsNumber + ": no file " + OptionsFileOf(s, request.OptionsNumber));
    }

    RunFigures figures;
    s.DirectionDone = [&figures](RunState& state, i16 d) { RecordDirection(state, d, figures, true); };
    try {
        AnalyzeResponse(s);
    } catch (const Failure& failure) {
        s.DirectionDone = nullptr;
        std::string what = failure.what();
        if (failure.Number() == kDivisionByZero && o.MissMassOn == 1 && s.Curve.CurvePoints > 0 &&
            s.Curve.CurvePeriod(1) == 0) {
            what += " (the curve's first period is 0 while missing mass is on)";
        }
        throw Failure(failure.Number(), "analysis of options set " + o.OptionsNumber + ": " + what);
    }
    s.DirectionDone = nullptr;
    RecordRun(s, figures);
    figures.Messages = host.Messages;
    // What a batch run of these options would find when it came to post.
    NoteMissingCasepost(s);
    figures.RunNotes = host.Notes;
    return figures;
}

void WriteReportFiles(const std::vector<std::pair<std::string, std::string>>& files) {
    for (const auto& [path, bytes] : files) {
        const std::filesystem::path folder = std::filesystem::path(path).parent_path();
        std::error_code error;
        if (!folder.empty()) std::filesystem::create_directories(folder, error);
        if (error)
            Fail(kPathAccessError, "cannot make the folder " + folder.string() + ": " + error.message());
    }
    std::vector<std::unique_ptr<PrintFile>> open;
    for (const auto& [path, bytes] : files) {
        open.push_back(std::make_unique<PrintFile>(path, TextMode::Output));
        open.back()->Item(bytes);
    }
    for (auto& file : open) file->Close();
}

}  // namespace tremodal
