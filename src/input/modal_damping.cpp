#include "input/modal_damping.h"

#include "base/file_system.h"
#include "base/number_text.h"
#include "base/text_files.h"

namespace tremodal {

void ReadModalDamping(RunState& state) {
    const f32 ratio = state.Options.DampingRatio;
    for (i32 mode = 1; mode <= state.Freq.NumModes; ++mode) state.ModalDamping(mode) = ratio;

    // The file is optional: one the editor never saved does not exist.
    const std::string path = state.Model.ModelPath + ".USD" + LTrim(state.Options.FreqCase);
    if (!FileExists(path)) return;

    // Pairs of mode number and ratio, in any order, the last one for a mode
    // counting. The list ends at -1, at a mode above the case's count (whose
    // ratio is still read, into the pseudo-mode's slot), or at the end of the
    // file. Any fault in the file (its end after a mode number, a mode beyond
    // the array, a text that is not a number) ends the reading quietly:
    // what was read stands and the other modes keep the default ratio.
    try {
        TextInput file(path);
        i32 mode = 0;
        while (mode != -1 && mode <= state.Freq.NumModes) {
            mode = file.ReadI16Field();
            if (mode == -1) continue;
            f32& slot = state.ModalDamping(mode);
            slot = file.ReadSingleField();
            if (!(slot > 0)) slot = ratio;
        }
        file.Close();
    } catch (const Failure&) {
        // The file closes as it goes out of scope.
    }
}

}  // namespace tremodal
