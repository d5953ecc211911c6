#include "spectral/excitation.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void BuildExcitation(RunState&, i16) {}

}  // namespace tremodal
