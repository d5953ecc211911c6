// The commands behind the buttons of Form2: the four run buttons with their
// guards, the batch job file, the options, the spectrum curve and damping in
// the suite's editor, the report viewer, the clipboard copy and Close.
//
// A command runs to its end before the next event is served. Whatever fails
// inside one (a damaged frequency case, a file that cannot be written, an
// editor that will not start) is shown as a message with its number and the
// dialog stays usable; the options in memory are kept.
#pragma once

#include <string>

#include "dialog/form2.h"

namespace tremodal {

// Takes the controls (SetDef), asks for the options number and writes the
// options file. Act is set to 1 when the user gave no number, and nothing is
// written then.
void SaveDef(RunState& state, const Form2& form, i16& Act);

// The job file of the suite's batch tool: ModelPath + ".BRM", or the
// extension named by the first field of the model's .XBT file (any case).
std::string BatchJobFile(const RunState& state);

// 0 Execute, 1 Batch, 2 Execute(Partial), 3 Batch (Partial).
void Command1_Click(RunState& state, Form2& form, int Index);
// Close: the program ends; a running casepost is left to run.
void Command2_Click(RunState& state, Form2& form);
// 0 Create/Edit Resp Spectrum Curve, 1 Get Response Spectrum Curve.
void Command3_Click(RunState& state, Form2& form, int Index);
// Close/Open Output Viewer.
void Command4_Click(RunState& state, Form2& form);
// 0 Open Options, 1 Save Options.
void Command5_Click(RunState& state, Form2& form, int Index);
// By Mode: the damping file of the frequency case in the field, in the editor.
void Command6_Click(RunState& state, Form2& form);
// The report onto the clipboard, each line ended by a carriage return alone.
void Copy_Click(RunState& state, Form2& form);

}  // namespace tremodal
