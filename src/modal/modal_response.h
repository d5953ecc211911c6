// Modal displacement and acceleration response of every equation, and the
// modal response file of the direction.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Fills ModalDisp and ModalAccel and writes the direction's files.
void ComputeModalResponse(RunState& state, i16 d);

}  // namespace tremodal
