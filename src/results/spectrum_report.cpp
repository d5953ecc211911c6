#include "results/spectrum_report.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void ReportSpectrum(RunState&) {}

}  // namespace tremodal
