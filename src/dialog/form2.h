// The dialog Form2 as a plain record of what its controls hold, and the
// operations that move values between the controls and ResponseOptions. The
// Qt view copies its widgets into this record before it calls a handler and
// back afterwards; nothing here knows a widget.
//
// Members of a control array are indexed as on the form: txtCase[3] is
// txtCase(3), and chkDir[k] stands for direction k + 1.
#pragma once

#include <array>
#include <string>

#include "base/run_state.h"

namespace tremodal {

class DialogHost;

// The captions of the combination method buttons: the selected one is
// stored as CombName, blanks included.
inline constexpr const char* kOptCombCaptions[5] = {"SRSS", "CQC", "10% Group", "DSM           Duration Secs",
                                                    "ABS Sum"};

struct Form2 {
    std::string Caption;            // the dialog's title
    std::string Label1 = "Label1";  // the model
    std::string Label5;             // the spectrum file

    // The fields, with the text of a fresh dialog.
    std::array<std::string, 5> txtCase{"", "", "0", "0",
                                       "0"};  // freq case, results case, start case, mode, sign mode
    std::string txtDir = "0";
    std::array<std::string, 3> txtFact{"0.7", "0.5", "400"};  // lateral, vertical, shear wave velocity
    std::array<std::string, 3> txtGround{"0", "0", "0"};
    std::string txtCurve = "9.81";
    std::string txtTDur = "10";
    std::string txtDampR = "0.05";

    // Check boxes, 0 or 1.
    std::array<i16, 6> chkDir{1, 0, 0, 0, 0, 0};
    i16 chkAccel = 0;
    i16 chkShear = 0;
    i16 chkMissMass = 0;
    i16 chkZPA = 1;

    // The index of the selected option button of each group; -1 for none.
    int optSpect = 2;
    int optInterp = 0;
    int optComb = 1;

    bool List1Visible = false;  // the report viewer; its lines are RunState::List1
    bool CopyVisible = false;

    DialogHost* Screen = nullptr;  // clipboard, cursor, editor, end
};

// Once, when the dialog is created: the model in Label1, the release in the
// title, and the fresh texts of the number fields.
void Form_Load(RunState& state, Form2& form);

// The controls into ResponseOptions. A field that is not a number, or a mode
// beyond 16 bits, fails (13 or 6) with the field and its text named, before
// any item has changed.
void SetDef(RunState& state, const Form2& form);

// ResponseOptions into the controls. A SpectrumType that names no button
// leaves the selection as it was and fails with 9 once every other control
// is set.
void SetOpt(RunState& state, Form2& form);

// The three check boxes that count at once, without SetDef.
void chkMissMass_Click(RunState& state, const Form2& form);
void chkShear_Click(RunState& state, const Form2& form);
void chkZPA_Click(RunState& state, const Form2& form);

// Key filters: KeyAscii is the typed character's code; set to 0 the
// character is dropped. Only digits, the sign, the point, control keys and
// the other codes below 58 pass, and of the letters only E; the factor
// fields raise a small e to E, the case and angle fields drop it.
void txtCase_KeyPress(int Index, i16& KeyAscii);
void txtDir_KeyPress(i16& KeyAscii);
void txtFact_KeyPress(int Index, i16& KeyAscii);
void txtGround_KeyPress(int Index, i16& KeyAscii);
void txtCurve_KeyPress(i16& KeyAscii);

}  // namespace tremodal
