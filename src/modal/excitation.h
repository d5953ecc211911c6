// Excitation vectors: how far each equation moves under a unit ground motion
// in a direction, the structure taken as a rigid body on the ground.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Fills Excitation, CosAngle and SinAngle for direction d.
void BuildExcitation(RunState& state, i16 d);

// The two halves of it, which change nothing in the state: the angle of
// direction d's pass (c and sn hold the last pass's on the way in), and the
// excitation of every equation at that angle into r.
void ExcitationAngle(const RunState& state, i16 d, f64& c, f64& sn);
void FillExcitation(const RunState& state, i16 d, f64 c, f64 sn, Array1<f32>& r);

}  // namespace tremodal
