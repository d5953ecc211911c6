// Missing mass load cases: the mass the modes leave out, at the zero period
// acceleration, as a static load case for the suite's solver.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Writes the load file and the case record of direction d.
void WriteMissMassCase(RunState& state, i16 d);

}  // namespace tremodal
