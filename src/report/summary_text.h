// The summary of a run as a person reads it in a terminal: the model and its
// modes, the curve and its ZPA, the participation of each direction, the
// base shear under every method side by side, and notes on suspect input.
#pragma once

#include <string>
#include <vector>

#include "report/run_figures.h"

namespace tremodal {

// The dialog's captions: of direction d (1 to 6), and of method 0 to 4.
std::string DirectionCaption(i16 d);
std::string MethodCaption(int method);

// The model's unit of length ("m", or "in" for unit system 1), the unit of
// the curve's values as the run uses them, and the curve's kind in words.
std::string LengthUnit(const RunFigures& figures);
std::string CurveUnit(const RunFigures& figures);
std::string CurveKind(i16 spectrumType);
// The model's unit of mass (of rotary inertia with rotation) and of force:
// kg and N, or for unit system 1 lbf s2/in and lbf.
std::string MassUnit(const RunFigures& figures, bool rotation);
std::string ForceUnit(const RunFigures& figures);
// The global axis a direction moves along or turns about: "along X",
// "about Y (vertical)", "along (0.866, 0, 0.500)".
std::string AxisText(const DirectionFigures& direction);

// The summary's lines, without line ends.
std::vector<std::string> SummaryLines(const RunFigures& figures);

// The notes on input that looks wrong, each one sentence.
std::vector<std::string> SuspectInputNotes(const RunFigures& figures);

}  // namespace tremodal
