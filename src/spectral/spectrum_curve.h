// The response spectrum curve: read from SpectrumFile, evaluated at the period
// of every mode, turned into a spectral displacement, and the zero period
// acceleration fixed.
#pragma once

#include <string>

#include "runcontrol/run_state.h"

namespace tremodal {

// Fills SpectrumCurve, ModalSpectrum, ZpaValue and ZpaPeriod.
void ReadSpectrumCurve(RunState& state);

}  // namespace tremodal
