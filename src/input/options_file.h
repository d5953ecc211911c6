// The options file: the stored form of ResponseOptions, one positional text
// file of 24 lines per options number (ModelPath + ".USM" + number). Labels
// are for the reader of the file and for its copy in the results header; the
// reader throws them away.
#pragma once

#include <string>

#include "base/run_state.h"

namespace tremodal {

// Reads OptionsFile into ResponseOptions. Any failure ends the reading
// quietly: what the file did not reach keeps its value. CombName is then set
// from CombMethod and a spectrum file stored as "MODEL.<ext>" is completed
// with the model's path.
void ReadOptions(RunState& state);

// Writes OptionsFile from ResponseOptions, replacing any old file. A spectrum
// file beside the model under the model's own name is stored as
// "MODEL.<ext>", so that the file serves another model too.
void WriteOptionsFile(RunState& state);

// The name the writer stores for SpectrumFile.
std::string FoldSpectrumFileName(const RunState& state);

// CombName as the options reader makes it up from CombMethod; methods outside
// 0 to 4 leave it as it was.
void SetCombNameFromMethod(ResponseOptions& options);

// DirFactor(4..6), the ground rotations, from DirFactor(3) and
// ShearWaveVelocity; all three 0 when the velocity is 0.
void SetRotationFactors(ResponseOptions& options);

// The options a fresh dialog shows: spectrum type 2, curve factor 9.81,
// factors 1, 0.5, 0.7 and the rotation factors derived from a shear wave
// velocity of 400, only the principal direction on, CQC, 10 s, 5 % damping,
// ZPA from the highest mode.
void SetFreshOptions(ResponseOptions& options);

}  // namespace tremodal
