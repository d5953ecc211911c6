// The spectrum curve and the modal points table in the report.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Adds the two tables to List1.
void ReportSpectrum(RunState& state);

// Mode m on the curve as the analysis uses it: the period, the spectral
// displacement with the curve factor in it (times the multiplier), and the
// pseudo-velocity and pseudo-acceleration worked from the displacement at
// the mode's frequency, whatever kind the curve was.
struct ModalPoint {
    f32 Period = 0;
    f32 Displacement = 0;
    f32 Velocity = 0;
    f32 Acceleration = 0;
};
ModalPoint ModalPointOf(const RunState& state, i32 m, f64 displacementMultiplier = 1);

}  // namespace tremodal
