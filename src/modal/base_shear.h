// Base shear of a translational direction under the chosen modal combination.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Sets BaseShear(d).
void CombineBaseShear(RunState& state, i16 d);

}  // namespace tremodal
