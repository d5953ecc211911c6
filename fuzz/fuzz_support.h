// What the fuzz targets share: the test fake for the machine, a private
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

#include "base/failure.h"
#include "base/run_state.h"
#include "support/test_support.h"

namespace tremodal::fuzz {

// One input's run on the model "FUZZ" in the working directory, as start-up
// leaves it, with the files of the input before cleared away. The machine is
// the tests' fake: message boxes are recorded and never wait, prompts are
// cancelled, children never start, and both settings name the working
// directory.
class Run {
public:
    Run(const std::uint8_t* data, std::size_t size);

    // Parameters off the front of the input (zero past its end).
    std::uint8_t TakeU8();
    std::int16_t TakeI16();
    // Writes what is left of the input to the file.
    void WriteRest(const std::string& name) const;
    // The input split into the parts that stand for several files, at each
    // line "@@FILE@@" (the line end before it stays with its part).
    std::vector<std::string_view> SplitFiles() const;

    testing::FakeHost Ui;
    RunState State;

private:
    std::string_view input_;
};

void WriteFile(const std::string& name, std::string_view bytes);

// Runs a reader: a numbered failure is one of its ordinary outcomes.
template <class Operation>
void Attempt(Operation operation) {
    try {
        operation();
    } catch (const Failure&) {
    }
}

}  // namespace tremodal::fuzz
