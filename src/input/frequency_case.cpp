#include "input/frequency_case.h"

#include "runcontrol/number_text.h"
#include "runcontrol/text_files.h"

namespace tremodal {

void ReadFrequencyCase(RunState& state) {
    // The binary open would create a missing file, so a text open first is
    // what turns a missing frequency case into "file not found".
    const std::string path = state.Model.ModelPath + ".H" + LTrim(state.Options.FreqCase);
    TextInput probe(path);
    probe.Close();
    // Not yet built: the header, eigenvalues, shape block and mass form.
}

// Not yet built: this operation does nothing until its subsystem lands.
void ReadMassMatrix(RunState&) {}

// Not yet built: this operation does nothing until its subsystem lands.
void ReadMassVector(RunState&) {}

}  // namespace tremodal
