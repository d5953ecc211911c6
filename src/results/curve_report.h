// The spectrum curve and the modal points table in the report.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Adds the two tables to List1.
void ReportSpectrum(RunState& state);

}  // namespace tremodal
