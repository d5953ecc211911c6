// The analysis driver: one pass from the stored eigen-solution to the result
// files, in the fixed order the suite relies on. The numerical work lies in
// the operations it calls, the report and the result files in results/; here
// stand only the skeleton of a run, the rules of the run phase, the
// single-mode guard and the title of the results case.
#pragma once

#include "base/run_state.h"

namespace tremodal {

// One analysis run on RunState. RunPhase 1 is the first pass of a missing
// mass analysis (load cases out, no results case), 2 the second (solved
// cases in), anything else a plain run.
void AnalyzeResponse(RunState& state);

// "SpectResp <options>:FrqCase <case>:Dir'n <angle> Deg: <method or mode>".
void SetLoadCaseTitle(RunState& state);

}  // namespace tremodal
