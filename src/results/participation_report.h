// The participation table of a direction in the report.
#pragma once

#include <string>
#include <vector>

#include "base/run_state.h"

namespace tremodal {

// Adds the direction's table to List1.
void ReportParticipation(RunState& state, i16 d);

// One mode's row of the participation table of the direction in hand.
struct ParticipationRow {
    f32 Omega = 0;
    f32 Hertz = 0;
    f32 Period = 0;
    f32 Effective = 0;   // the modal effective mass
    f32 Cumulative = 0;  // the running sum from mode 1, this mode included
    f32 Percent = 0;     // Cumulative as a share of ExcitedMass; 0 unless asked for
};

// The rows of modes 1 to NumModes from the participation factors that stand;
// the share of the excited mass only with `percent`.
std::vector<ParticipationRow> ParticipationRows(const RunState& state, bool percent);

}  // namespace tremodal
