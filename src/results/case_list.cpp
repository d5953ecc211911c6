#include "results/case_list.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void ResetCase(RunState&, std::string&) {}

// Not yet built: this operation does nothing until its subsystem lands.
void WriteCaseHeader(RunState&, const std::string&) {}

}  // namespace tremodal
