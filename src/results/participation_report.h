// The participation table of a direction in the report.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Adds the direction's table to List1.
void ReportParticipation(RunState& state, i16 d);

}  // namespace tremodal
