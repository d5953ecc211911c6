// The load case list (.NSL) and the results header (.L) of a results case.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Deletes the case's files and clears its record; removes the leading
// blanks of caseNo.
void ResetCase(RunState& state, std::string& caseNo);

// Writes the results header with the options and the report as comments,
// and marks the case.
void WriteCaseHeader(RunState& state, const std::string& caseNo);

}  // namespace tremodal
