// Participation factors of the modes in the direction in hand, and the mass
// no mode reaches.
#pragma once

#include <string>
#include <vector>

#include "base/run_state.h"

namespace tremodal {

// For the square mass form.
void ComputeParticipationSquare(RunState& state);

// For the lumped mass form.
void ComputeParticipationLumped(RunState& state);

// Starts working out the participation sums of the passes of the given
// directions, in this order, on a thread of their own, while the caller goes
// on with the pass in hand; a pass takes its sums over when its excitation
// is the one they were worked for, and works them itself otherwise. On one
// thread, or for a small model, it does nothing.
void StartParticipationAhead(RunState& state, const std::vector<i16>& directions);
// Waits for sums worked out ahead and drops them.
void DropParticipationAhead(RunState& state);

}  // namespace tremodal
