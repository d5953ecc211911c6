// What the fuzz targets share: a quiet stand-in for the machine, a private
// working directory for the files an input becomes, and the split of one
// input into several model files.
//
// Each target writes its input to a model file named FUZZ + suffix in that
// directory and calls the real reader on a fresh RunState. A numbered
// Failure is an ordinary outcome of a damaged file; anything else (a
// sanitizer report, another exception, a hang, memory without end) is a
// finding.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "runcontrol/failure.h"
#include "runcontrol/host.h"
#include "runcontrol/run_state.h"

namespace tremodal::fuzz {

// The machine without a screen or an operator: both settings name the
// working directory, a message box is counted and never waits, a prompt is
// cancelled, and no child is ever started.
class QuietHost : public Host {
public:
    std::string ReadSetting(const std::string& application, const std::string& section,
                            const std::string& key) override;
    void ShowMessage(const std::string& text, const std::string& title) override;
    std::string Prompt(const std::string& title, const std::string& question,
                       const std::string& proposed) override;
    void StartChild(const std::string& program) override;
    ChildState PollChild() override;

    int Messages = 0;
};

// A run on the model "FUZZ" in the working directory, as start-up leaves it.
struct Run {
    Run();
    QuietHost Ui;
    RunState State;
};

// Removes every file of the previous input, so that no input sees another's.
void ClearFiles();
void WriteFile(const std::string& name, std::string_view bytes);

// The input as text.
std::string_view Bytes(const std::uint8_t* data, std::size_t size);

// The parts of an input that stand for several files, split at each line
// "@@FILE@@" (the line end of the part before it included).
std::vector<std::string_view> SplitFiles(std::string_view input);
extern const char* const kFileMark;

// Takes a parameter off the front of the input (zero past its end).
std::uint8_t TakeU8(std::string_view& input);
std::int16_t TakeI16(std::string_view& input);

// Runs a reader: a numbered failure is one of its ordinary outcomes.
template <class Operation>
void Attempt(Operation operation) {
    try {
        operation();
    } catch (const Failure&) {
    }
}

}  // namespace tremodal::fuzz
