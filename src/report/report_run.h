// The engineer's look at a run: "TreModal --report N [--model PATH]
// [--csv DIR] [--plots DIR]" runs the analysis of options set N in memory,
// through the run's own operations with its writers off, and leaves nothing
// beside the model or in Files1.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/host.h"
#include "report/run_figures.h"

namespace tremodal {

struct ReportRequest {
    std::string OptionsNumber;
    std::string ModelPath;  // empty: the current model of MODEL.NAM
    std::string CsvDir;     // empty: no tables
    std::string PlotsDir;   // empty: no charts
};

extern const char* const kReportUsage;

// The arguments behind "--report". Returns the empty text, or what is wrong
// with them for a usage error.
std::string ParseReportArguments(const std::vector<std::string>& args, ReportRequest& request);

// The host of a run in memory: the settings come from the machine, every
// message and note is kept for the summary instead of being shown, nobody
// answers a prompt, and no child is started.
class RecordingHost : public Host {
public:
    explicit RecordingHost(Host& machine) : machine_(machine) {}
    std::string ReadSetting(const std::string& application, const std::string& section,
                            const std::string& key) override;
    void ShowMessage(const std::string& text, const std::string& title) override;
    std::string Prompt(const std::string& title, const std::string& question,
                       const std::string& proposed) override;
    void StartChild(const std::string& program) override;
    ChildState PollChild() override;
    void Note(const std::string& text) override;

    std::vector<std::string> Messages;
    std::vector<std::string> Notes;

private:
    Host& machine_;
};

// Finds the model, reads its size, coordinates and options set, and runs the
// analysis in memory with the host as state.Ui. It goes on wherever a batch
// run goes on (a curve it cannot read, for one), with the run's messages and
// notes kept for the summary, and fails only where a batch run fails.
// Failures say what failed; one numbered 0 has no number of its own to show.
RunFigures RunReport(RunState& state, RecordingHost& host, const ReportRequest& request);

// Writes each (path, bytes) pair, creating the folders that are missing.
// Every file gets its temporary name beside its target before any is
// written, so a folder that cannot take them fails before a file appears;
// each file then replaces its target whole.
void WriteReportFiles(const std::vector<std::pair<std::string, std::string>>& files);

}  // namespace tremodal
