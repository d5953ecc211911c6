#include "spectral/spectrum_curve.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void ReadSpectrumCurve(RunState&) {}

}  // namespace tremodal
