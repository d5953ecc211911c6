// Damping by mode: ModelPath + ".USD" + FreqCase, pairs of mode number and
// damping ratio over the run's default ratio.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Fills ModalDamping(1..NumModes).
void ReadModalDamping(RunState& state);

}  // namespace tremodal
