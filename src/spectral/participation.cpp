#include "spectral/participation.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void ComputeParticipationSquare(RunState&) {}

// Not yet built: this operation does nothing until its subsystem lands.
void ComputeParticipationLumped(RunState&) {}

}  // namespace tremodal
