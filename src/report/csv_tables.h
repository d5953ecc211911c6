// The run's figures as tables for a spreadsheet or a script: a header row,
// commas, "." as the decimal point whatever the locale, and every single to
// 9 significant digits, which brings back its exact value.
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

}  // namespace tremodal
