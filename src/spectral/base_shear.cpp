#include "spectral/base_shear.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void CombineBaseShear(RunState&, i16) {}

}  // namespace tremodal
