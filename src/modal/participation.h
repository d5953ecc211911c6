// Participation factors of the modes in the direction in hand, and the mass
// no mode reaches.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// For the square mass form.
void ComputeParticipationSquare(RunState& state);

// For the lumped mass form.
void ComputeParticipationLumped(RunState& state);

}  // namespace tremodal
