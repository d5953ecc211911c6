// Excitation vectors: how far each equation moves under a unit ground motion
// in a direction, the structure taken as a rigid body on the ground.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Fills Excitation, CosAngle and SinAngle for direction d.
void BuildExcitation(RunState& state, i16 d);

}  // namespace tremodal
