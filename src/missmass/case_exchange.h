// The exchange with the suite's solver between the two passes of a missing
// mass analysis: the run comb out, the solved cases back in.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Writes the .C0 run comb.
void WriteMissMassComb(RunState& state);

// Reads the solved case MissMassCase into MissMassDof; sets MissMassRead.
void ReadMissMassResults(RunState& state);

}  // namespace tremodal
