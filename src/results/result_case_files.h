// The files of a results case: the binary .W, .1 and .2, and response.cnt,
// the summary of the run that casepost reads.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Writes the .W and .1 files.
void WriteForceFiles(RunState& state, const std::string& caseNo);

// Writes the .2 file.
void WriteCaseIndexFiles(RunState& state, const std::string& caseNo);

// FilesDir + "/response.cnt", the last file of a run before casepost starts.
// A duration below 0.1 s is raised to 0.1 in the options, as casepost wants.
void WriteResponseCount(RunState& state);

}  // namespace tremodal
