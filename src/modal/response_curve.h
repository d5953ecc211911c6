// The response spectrum curve: read from SpectrumFile, evaluated at the period
// of every mode, turned into a spectral displacement, and the zero period
// acceleration fixed.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// The period of a mode, 2 pi / omega, as a single.
f32 ModePeriod(f32 omega);
// The frequency of a mode in hertz, omega / 2 / pi, as a single.
f32 ModeHertz(f32 omega);

// Fills SpectrumCurve, ModalSpectrum, ZpaValue and ZpaPeriod.
void ReadSpectrumCurve(RunState& state);

}  // namespace tremodal
