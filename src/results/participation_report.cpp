#include "results/participation_report.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void ReportParticipation(RunState&, i16) {}

}  // namespace tremodal
