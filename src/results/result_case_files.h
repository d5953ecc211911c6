// The binary files of a results case: .W, .1 and .2.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Writes the .W and .1 files.
void WriteForceFiles(RunState& state, const std::string& caseNo);

// Writes the .2 file.
void WriteCaseIndexFiles(RunState& state, const std::string& caseNo);

}  // namespace tremodal
