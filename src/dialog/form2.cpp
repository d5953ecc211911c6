#include "dialog/form2.h"

#include "base/checked_math.h"
#include "base/file_system.h"
#include "base/number_text.h"
#include "input/options_file.h"

namespace tremodal {

namespace {

constexpr const char* kTitle = "Seismic Analysis - Modal Response Spectrum Analysis";

// A field's number, stored as its item is: a double, a single, or a mode
// number rounded down to 16 bits. The conversion is strict ("", "-" and "1/2"
// are no numbers), and a failure names the field by the words the dialog
// shows beside it.
template <class Item>
Item FieldNumber(const std::string& text, const char* field, Item (*store)(f64)) {
    f64 value = 0;
    try {
        value = CheckF64(StrictNumber(text));
    } catch (const Failure& failure) {
        Fail(failure.Number(), std::string(field) + ": \"" + text + "\" is not a number");
    }
    try {
        return store(value);
    } catch (const Failure& failure) {
        Fail(failure.Number(), std::string(field) + ": \"" + text + "\" is out of range");
    }
}

f64 FieldDouble(const std::string& text, const char* field) { return FieldNumber(text, field, CheckF64); }
f32 FieldSingle(const std::string& text, const char* field) { return FieldNumber(text, field, StoreF32); }
i16 FieldMode(const std::string& text, const char* field) { return FieldNumber(text, field, FloorToI16); }

constexpr i16 kCodeSmallE = 101;
constexpr i16 kCodeCapitalE = 69;
constexpr i16 kFirstDroppedCode = 58;  // ":" and everything above it

void DropLettersButE(i16& KeyAscii) {
    if (KeyAscii >= kFirstDroppedCode && KeyAscii != kCodeCapitalE) KeyAscii = 0;
}

// The factor fields take "1.5e-3" as typed: the exponent letter is raised.
void RaiseSmallE(i16& KeyAscii) {
    if (KeyAscii == kCodeSmallE) KeyAscii = kCodeCapitalE;
    DropLettersButE(KeyAscii);
}

}  // namespace

void Form_Load(RunState& state, Form2& form) {
    form.Label1 = "Model :" + state.Model.ModelPath;
    form.Caption = std::string(kTitle) + "     Rel " + GeneralText(i32(TREMODAL_VERSION_MAJOR)) + "-" +
                   GeneralText(i32(TREMODAL_VERSION_MINOR)) + "-" + GeneralText(i32(TREMODAL_VERSION_PATCH));
    form.txtFact[0] = GeneralText(0.7f);
    form.txtFact[1] = GeneralText(0.5f);
    form.txtDampR = GeneralText(0.05f);
    form.txtCurve = GeneralText(9.81f);
}

void SetDef(RunState& state, const Form2& form) {
    // Every number first: a field that is not one must leave the options as
    // they were, so that nothing half-taken is written or run.
    const f32 vertical = FieldSingle(form.txtFact[1], "Direction Factor (Vertical)");
    const f32 lateral = FieldSingle(form.txtFact[0], "Direction Factor (Lateral)");
    const f32 velocity = FieldSingle(form.txtFact[2], "Shear Wave Velocity (m/s)");
    const f32 groundX = FieldSingle(form.txtGround[0], "Rotation Datum (Ground) X");
    const f32 groundY = FieldSingle(form.txtGround[1], "Rotation Datum (Ground) Y");
    const f32 groundZ = FieldSingle(form.txtGround[2], "Rotation Datum (Ground) Z");
    const f32 curveFactor = FieldSingle(form.txtCurve, "Curve Factor");
    const f64 angle = FieldDouble(form.txtDir, "Principal Direction Angle");
    const f32 duration = FieldSingle(form.txtTDur, "DSM Duration Secs");
    const f32 damping = FieldSingle(form.txtDampR, "Damping Ratio");
    const i16 singleMode = FieldMode(form.txtCase[3], "Use only one mode");
    const i16 forceSignMode = FieldMode(form.txtCase[4], "Base Elem Force Sign on Mode");

    ResponseOptions& o = state.Options;
    o.DirFactor(1) = 1;
    o.DirFactor(2) = vertical;
    o.DirFactor(3) = lateral;
    o.ShearWaveVelocity = velocity;
    SetRotationFactors(o);
    for (int k = 0; k < 6; ++k) o.DirOn(k + 1) = form.chkDir[k];
    o.GroundX = groundX;
    o.GroundY = groundY;
    o.GroundZ = groundZ;
    if (form.optComb >= 0) o.CombMethod = i16(form.optComb);
    if (form.optSpect >= 0) o.SpectrumType = i16(form.optSpect);
    o.InterpMethod = form.optInterp == 0 ? 0 : 1;
    o.CurveFactor = curveFactor;
    o.FreqCase = LTrim(form.txtCase[0]);
    o.ResultsCase = LTrim(form.txtCase[1]);
    o.PrincipalAngle = angle;
    o.Duration = duration;
    o.DampingRatio = damping;
    o.SingleMode = singleMode;
    o.ForceSignMode = forceSignMode;
    o.MissMassOn = form.chkMissMass;
    o.ZpaHighestMode = form.chkZPA;
    o.MissMassStartCase = LTrim(form.txtCase[2]);
    o.CreateAccelFile = form.chkAccel;
}

void SetOpt(RunState& state, Form2& form) {
    const ResponseOptions& o = state.Options;
    form.txtFact[1] = GeneralText(o.DirFactor(2));
    form.txtFact[0] = GeneralText(o.DirFactor(3));
    form.txtFact[2] = GeneralText(o.ShearWaveVelocity);
    for (int k = 0; k < 6; ++k) form.chkDir[k] = o.DirOn(k + 1) != 0 ? 1 : 0;
    form.txtGround[0] = GeneralText(o.GroundX);
    form.txtGround[1] = GeneralText(o.GroundY);
    form.txtGround[2] = GeneralText(o.GroundZ);
    if (o.CombMethod >= 0 && o.CombMethod <= 4) form.optComb = o.CombMethod;
    const bool spectrumTypeShown = o.SpectrumType >= 0 && o.SpectrumType <= 2;
    if (spectrumTypeShown) form.optSpect = o.SpectrumType;
    form.optInterp = o.InterpMethod == 1 ? 1 : 0;
    form.txtCurve = GeneralText(o.CurveFactor);
    form.txtCase[0] = o.FreqCase;
    form.txtCase[1] = o.ResultsCase;
    form.txtCase[3] = GeneralText(o.SingleMode);
    form.txtCase[4] = GeneralText(o.ForceSignMode);
    // A curve that has gone since the options were saved is not shown; the
    // run commands will say so.
    if (FileExists(o.SpectrumFile)) form.Label5 = "Respons File:" + o.SpectrumFile;
    form.txtDir = GeneralText(o.PrincipalAngle);
    form.txtTDur = GeneralText(o.Duration);
    form.txtDampR = GeneralText(o.DampingRatio);
    // Setting a box counts as its click.
    form.chkMissMass = o.MissMassOn != 0 ? 1 : 0;
    chkMissMass_Click(state, form);
    form.txtCase[2] = o.MissMassStartCase;
    form.chkZPA = o.ZpaHighestMode != 0 ? 1 : 0;
    chkZPA_Click(state, form);
    if (!spectrumTypeShown) {
        Fail(kSubscriptOutOfRange,
             "Spectrum type " + GeneralText(o.SpectrumType) + " of the options names no curve kind");
    }
}

void chkMissMass_Click(RunState& state, const Form2& form) { state.Options.MissMassOn = form.chkMissMass; }
void chkShear_Click(RunState& state, const Form2& form) { state.Options.ShowModalShear = form.chkShear; }
void chkZPA_Click(RunState& state, const Form2& form) { state.Options.ZpaHighestMode = form.chkZPA; }

void txtCase_KeyPress(int, i16& KeyAscii) { DropLettersButE(KeyAscii); }
void txtDir_KeyPress(i16& KeyAscii) { DropLettersButE(KeyAscii); }
void txtFact_KeyPress(int, i16& KeyAscii) { RaiseSmallE(KeyAscii); }
void txtGround_KeyPress(int, i16& KeyAscii) { RaiseSmallE(KeyAscii); }
void txtCurve_KeyPress(i16& KeyAscii) { RaiseSmallE(KeyAscii); }

}  // namespace tremodal
