// Modal displacement and acceleration response of every equation, and the
// modal response file of the direction.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Works out the modal displacements and accelerations of the direction and
// writes its files.
void ComputeModalResponse(RunState& state, i16 d);

}  // namespace tremodal
