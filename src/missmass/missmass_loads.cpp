#include "missmass/missmass_loads.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void WriteMissMassCase(RunState&, i16) {}

}  // namespace tremodal
