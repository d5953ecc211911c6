// Base shear of a translational direction under the chosen modal combination.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Sets BaseShear(d).
void CombineBaseShear(RunState& state, i16 d);

// The combined shear from what CombineBaseShear leaves under a method: every
// method but the absolute sum (4) leaves its square.
f32 CombinedShear(f32 baseShear, i16 combMethod);

}  // namespace tremodal
