// The run's figures as tables for a spreadsheet or a script: a header row
// whose columns carry their units in brackets ("period [s]"), commas, "." as
// the decimal point whatever the locale, and every single as the shortest
// decimal that reads back as the same single.
#pragma once

#include <string>

#include "report/run_figures.h"

namespace tremodal {

// modes.csv: mode, circular frequency, frequency, period, damping, and the
// spectral displacement, velocity and acceleration of the run.
std::string ModesTable(const RunFigures& figures);
// participation.csv: direction, mode, participation factor, effective mass,
// cumulative per cent (empty for a rotation that moves nothing).
std::string ParticipationTable(const RunFigures& figures);
// base_shear.csv: one row per translational direction that is on, the
// combined shear under each method.
std::string BaseShearTable(const RunFigures& figures);
// storey_shear.csv: for each translational direction that is on, one row per
// level from the top down: its height and the storey shear under each method
// (empty for a method not worked out).
std::string StoreyShearTable(const RunFigures& figures);

}  // namespace tremodal
