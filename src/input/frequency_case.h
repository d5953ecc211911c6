// The frequency case file ModelPath + ".H" + FreqCase: the eigen-solution
// the suite's solver left, with the map from node freedoms to equations and
// the mass data.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Opens the file, reads the header, eigenvalues, shape block and mass form,
// and leaves the stream open at the mass block.
void ReadFrequencyCase(RunState& state);

// Reads the square mass block.
void ReadMassMatrix(RunState& state);

// Reads the lumped mass block.
void ReadMassVector(RunState& state);

}  // namespace tremodal
