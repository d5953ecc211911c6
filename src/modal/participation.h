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

// Starts working out the participation sums of the pass of direction d on a
// thread of its own, while the caller goes on with the pass in hand; the
// pass of d takes them over when its excitation is the one they were worked
// for, and works them itself otherwise. On one thread, or for a small
// model, it does nothing.
void StartParticipationAhead(RunState& state, i16 d);
// Waits for sums worked out ahead and drops them.
void DropParticipationAhead(RunState& state);

}  // namespace tremodal
