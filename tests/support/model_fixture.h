// Models in a temporary directory, laid out as the suite leaves them: a small
// frame written here, or the example tool's shear building; the options
// edited as the dialog stores them; a run in this process or through the
// program; the modal response file read back.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>

#include "base/run_state.h"
#include "support/test_support.h"
#include "tools/frequency_case_writer.h"

namespace tremodal::testing {

using example::FrequencyCaseBytes;
using example::FrequencyCaseData;

// The options file of a fresh dialog with frequency case 1, results case 20
// and the curve beside the model, as the suite's other tools expect it.
extern const char* const kFreshOptionsFile;

// A stand-in casepost in dir/bin that appends "casepost ran in <cwd>" to
// dir/casepost.out and exits.
void WriteStandInCasepostIn(const std::string& dir);
// The status of a run of the real TreModal in dir, standard error dropped.
int RunTreModalIn(const std::string& dir, const std::string& commandLine, int seconds = 60,
                  const std::string& environment = "");

// The frequency case of the fixture's frame: nodes 2 to 4 carry x in
// equations 1, 3, 5 and z in 2, 4, 6, all of unit lumped mass; node 1 is the
// restrained base. Mode 1 (eigenvalue 100) sways x with 0.25, 0.5, 0.75,
// mode 2 (400) z with 0.3, 0.6, -0.4.
FrequencyCaseData FrameFrequencyCase();

// Replaces the one line of an options file that starts with `label`.
void SetOptionsLine(const std::string& path, const std::string& label, const std::string& line);

// Options set `number` of the model at `modelPath` read, changed and written
// back (or as set `to`) by the program's own reader and writer.
void EditOptions(const std::string& modelPath, const std::string& number,
                 const std::function<void(ResponseOptions&)>& change, const std::string& to = "");

// The line a failed batch run logs for failure `number` met at `stage`.
std::string FailureLine(int number, int stage);

// How a batch run ended: its status; the line it added to the log (the
// model's, or logFile beside it), "" for none; its standard error, with <M>
// for the model's path and <D> for its directory; whether casepost ran. A
// plain run that ends normally leaves response.cnt, one that fails does not.
struct Outcome {
    int status;
    std::string log;
    std::string err;
    bool casepost;
    std::string logFile = "";
};
// Failure `number` at `stage`: the generic line, then the plain one.
// The log is the model's, or logFile beside it.
Outcome Failed(int number, int stage, const std::string& plain, const std::string& logFile = "");
// A failure that logs a line of its own.
Outcome Told(const std::string& line, const std::string& plain);
// A run that went through to casepost with this on standard error.
Outcome RanOn(const std::string& err);

::testing::AssertionResult EndedAs(const struct ModelFixture& model, const ProgramRun& run,
                                   const Outcome& expected);
#define EXPECT_OUTCOME(model, run, outcome) EXPECT_TRUE(::tremodal::testing::EndedAs(model, run, outcome))
#define EXPECT_FAILURE(model, run, number, stage, plain) \
    EXPECT_OUTCOME(model, run, ::tremodal::testing::Failed(number, stage, plain))

// A batch run inside the test's own process, for what only the dialog can
// switch on (the base shear block, the accelerations file): the start-up on
// the model that dir/MODEL.NAM names reads the options and runs the analysis
// once, and the state then stays for further runs with changed options.
struct InProcessRun {
    FakeHost host;
    RunState state;

    InProcessRun(const std::string& dir, const std::string& commandLine);
    // Runs the analysis again on the options as they stand, the report
    // cleared first as the dialog clears it.
    void Analyze();
};

struct ModelFixture {
    TempDir dir;
    std::string modelPath;  // dir + "/FRAME", or "/SHEAR"

    // Writes MODEL.NAM, FRAME.XSZ (5 elements, 4 nodes, unit system 1),
    // FRAME.XYZ, FRAME.URS1 (flat at 1) and FRAME.USM3 (the fresh dialog's
    // options with frequency case 1 and results case 20).
    ModelFixture();

    std::string File(const std::string& suffix) const { return modelPath + suffix; }

    // FRAME.H1: two modes of the three upper nodes swaying in x and z, six
    // equations of unit lumped mass; node 1 is the restrained base.
    void WriteFrequencyCase() const;
    void WriteStandInCasepost() const;

    // The real TreModal on this model, in its directory.
    ProgramRun Run(const std::string& commandLine, const RunSetting& setting = {}) const;
    // The same, giving the status and keeping standard error for Stderr().
    int RunTreModal(const std::string& commandLine, int seconds = 60) const;
    std::string Stderr() const { return lastErr_; }

protected:
    explicit ModelFixture(const std::string& name);

private:
    mutable std::string lastErr_;
};

// The example tool's shear building SHEAR, written with the tool's options
// (--storeys 5 and so on) and named in MODEL.NAM, with a stand-in casepost.
struct ExampleModel : ModelFixture {
    explicit ExampleModel(const std::string& toolOptions = "");
};

// A modal response file <model>.HS<d>: a 16-byte head (i16 nodes, i32
// equations, i32 rows, f32 damping ratio, i16 method), a row of 8 bytes for
// each mode (f32 circular frequency, f32 damping), then a block for each
// mode of 6 freedoms a node, 8 bytes each (i32 equation, f32 displacement).
struct ResponseFile {
    std::string bytes;
    explicit ResponseFile(const std::string& path) : bytes(ReadFile(path)) {}

    int Nodes() const { return Get<std::int16_t>(0); }
    int Rows() const { return Get<std::int32_t>(6); }
    float Omega(int row) const { return Get<float>(16 + 8 * std::size_t(row - 1)); }
    float Damping(int row) const { return Get<float>(20 + 8 * std::size_t(row - 1)); }
    // The freedom's place in the block of the row's mode.
    std::size_t At(int row, int node, int freedom) const {
        return 16 + 8 * std::size_t(Rows()) + 48 * std::size_t(Nodes()) * std::size_t(row - 1) +
               48 * std::size_t(node - 1) + 8 * std::size_t(freedom - 1);
    }
    int Equation(int row, int node, int freedom) const { return Get<std::int32_t>(At(row, node, freedom)); }
    float Value(int row, int node, int freedom) const { return Get<float>(At(row, node, freedom) + 4); }
    // The size the head promises.
    std::size_t Size() const { return At(Rows() + 1, 1, 1); }

    template <class T>
    T Get(std::size_t at) const {
        if (at + sizeof(T) > bytes.size()) throw std::runtime_error("modal response file too short");
        T value;
        std::memcpy(&value, bytes.data() + at, sizeof(T));
        return value;
    }
};

}  // namespace tremodal::testing
