// A small model in a temporary directory, laid out as the suite leaves it:
// MODEL.NAM naming the model, its size file, node coordinates, an options
// file and a frequency case file, and a stand-in casepost.
#pragma once

#include <string>

#include "base/run_state.h"
#include "support/frequency_case_fixture.h"
#include "support/test_support.h"

namespace tremodal::testing {

// The options file of a fresh dialog with frequency case 1, results case 20
// and the curve beside the model, as the suite's other tools expect it.
extern const char* const kFreshOptionsFile;

// The same three for any directory laid out as the suite's Files1, with the
// programs in dir/bin: the settings file, a stand-in casepost, and a run of
// the real TreModal there with standard error in dir/stderr.txt.
std::string WriteSettingsIn(const std::string& dir);
void WriteStandInCasepostIn(const std::string& dir);
// A run that takes longer than the given seconds is killed and gives 124;
// `environment` adds settings to the run's environment ("TREMODAL_THREADS=1").
int RunTreModalIn(const std::string& dir, const std::string& commandLine, int seconds = 60,
                  const std::string& environment = "");

// The frequency case of the fixture's frame: nodes 2 to 4 carry x in
// equations 1, 3, 5 and z in 2, 4, 6, all of unit lumped mass; node 1 is the
// restrained base. Mode 1 (eigenvalue 100) sways x with 0.25, 0.5, 0.75,
// mode 2 (400) z with 0.3, 0.6, -0.4.
FrequencyCaseData FrameFrequencyCase();

// Replaces the one line of an options file that starts with `label`.
void SetOptionsLine(const std::string& path, const std::string& label, const std::string& line);

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
    std::string modelPath;  // dir + "/FRAME"

    // Writes MODEL.NAM, FRAME.XSZ (5 elements, 4 nodes, unit system 1),
    // FRAME.XYZ and FRAME.USM3 (the fresh dialog's options with frequency
    // case 1 and results case 20).
    ModelFixture();

    std::string File(const std::string& suffix) const { return modelPath + suffix; }

    // FRAME.H1: two modes of the three upper nodes swaying in x and z, six
    // equations of unit lumped mass; node 1 is the restrained base.
    void WriteFrequencyCase() const;

    // A stand-in casepost in dir/bin that appends "casepost ran in <cwd>"
    // to dir/casepost.out and exits.
    void WriteStandInCasepost() const;
    // Runs the real TreModal on this model with the given command line,
    // standard error going to dir/stderr.txt. Returns the exit status.
    int RunTreModal(const std::string& commandLine, int seconds = 60) const;
    std::string Stderr() const;
};

}  // namespace tremodal::testing
