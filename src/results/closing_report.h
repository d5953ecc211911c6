// The closing blocks of the report, after the last direction: the missing
// mass loads and the base shear of the translations.
#pragma once

#include "base/run_state.h"

namespace tremodal {

// The ZPA, the start cases and the total missing mass load of each
// translation.
void AddMissingMassBlock(RunState& state);

// The combined base shear of each translation, under the options' method.
void AddBaseShearBlock(RunState& state);

}  // namespace tremodal
