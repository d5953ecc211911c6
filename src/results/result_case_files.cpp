#include "results/result_case_files.h"

namespace tremodal {

// Not yet built: this operation does nothing until its subsystem lands.
void WriteForceFiles(RunState&, const std::string&) {}

// Not yet built: this operation does nothing until its subsystem lands.
void WriteCaseIndexFiles(RunState&, const std::string&) {}

}  // namespace tremodal
