#include "spectral/modal_response.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void ComputeModalResponse(RunState&, i16) {}

}  // namespace tremodal
