#include "missmass/case_exchange.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void WriteMissMassComb(RunState&) {}

// Not yet built: this operation does nothing until its subsystem lands.
void ReadMissMassResults(RunState&) {}

}  // namespace tremodal
