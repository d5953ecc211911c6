// Node coordinates: ModelPath + ".XYZ", one record of 14 bytes per node in
// node order (an i16 nothing reads, then x, y, z as singles). Only the
// ground rotations use them.
#pragma once

#include "base/run_state.h"

namespace tremodal {

// Allocates NodeX, NodeY, NodeZ as (0..NumNodes) and fills them. A missing or
// short file leaves the coordinates it lacks at 0, without a word; the
// arrays keep their contents for the life of the process.
void ReadNodeCoordinates(RunState& state);

}  // namespace tremodal
