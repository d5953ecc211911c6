#include "input/modal_damping.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void ReadModalDamping(RunState&) {}

}  // namespace tremodal
