#include "input/options_file.h"

#include <algorithm>
#include <cctype>

#include "base/checked_math.h"
#include "base/host.h"
#include "base/number_text.h"
#include "base/text_files.h"

namespace tremodal {

namespace {

// The labels end in the comma that ends the reader's label field; lines 1 to
// 8 are 38 characters long and lines 17 to 24 are 40. The odd spellings are
// part of the format: the suite shows these lines as the record of a run.
constexpr const char* kFreqCaseLabel = "Frequency (Mass) Case Number         ,";
constexpr const char* kResultsCaseLabel = "Results Case Number                  ,";
constexpr const char* kSingleModeLabel = "Single Mode (non-zero is active)     ,";
constexpr const char* kSpectrumFileLabel = "Response Spectrum File               ,";
constexpr const char* kSpectrumTypeLabel = "Spectrun Type  0-Disp 1-Vel 2-Accel  ,";
constexpr const char* kCurveFactorLabel = "Specrum Curve Factor                 ,";
constexpr const char* kPrincipalLabel = "Principal Direction                  ,";
constexpr const char* kInterpLabel = "Interpolation Method 0-Linear 1-Log  ,";
constexpr const char* kDirectionHeading = "Spectrum Direction Definition";
constexpr const char* kFactorHeading = "Dir Factors   On/Off";
constexpr const char* kShearWaveLabel = "Subsoil Shear Wave veleocity           ,";
constexpr const char* kGroundLabel = "Rotation Datum (Ground)   X   Y   Z    ,";
constexpr const char* kCombLabel = "Modal Combination Method               ,";
constexpr const char* kDurationLabel = "Earthquake Duration (Secs)             ,";
constexpr const char* kDampingLabel = "Modal Damping Ratio                    ,";
constexpr const char* kForceSignLabel = "Element force sign is based on Mode    ,";
constexpr const char* kMissMassLabel = "Missing Mass Case (1 is active)        ,";
constexpr const char* kZpaLabel = "ZPZ Option (1 is higest mode)          ,";

std::string UpperCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

// A number field that holds no number reads as 0, as the format has it. The
// run goes on with the 0; the person is told the line, the key and what
// follows from it.
class OptionFields {
public:
    OptionFields(RunState& state, TextInput& in) : state_(state), in_(in) {}

    template <class Value>
    Value Number(Value value, const std::string& key, const char* consequence) {
        if (!HoldsNumber(in_.LastField()) && state_.Ui) {
            state_.Ui->Note(state_.Options.OptionsFile + ", line " + GroupedDigits(in_.LastFieldLine()) +
                            ", " + key + ": \"" + in_.LastField() +
                            "\" is not a number and reads as 0: " + consequence);
        }
        return value;
    }

private:
    RunState& state_;
    TextInput& in_;
};

std::string Key(const char* label) {
    return Trim(std::string_view(label).substr(0, std::string_view(label).find(',')));
}

// The reading proper. A failure anywhere ends it: the file is closed and the
// items behind the failing read keep what they held.
void ReadOptionItems(RunState& state) {
    ResponseOptions& o = state.Options;
    TextInput in(o.OptionsFile);
    OptionFields field(state, in);

    in.ReadTextField();
    o.FreqCase = in.ReadTextField();
    in.ReadTextField();
    o.ResultsCase = in.ReadTextField();
    in.ReadTextField();
    o.SingleMode = field.Number(in.ReadI16Field(), Key(kSingleModeLabel), "every mode is combined");
    in.ReadTextField();
    o.SpectrumFile = in.ReadTextField();
    in.ReadTextField();
    o.SpectrumType =
        field.Number(in.ReadI16Field(), Key(kSpectrumTypeLabel), "the curve is taken as displacements");
    in.ReadTextField();
    o.CurveFactor = field.Number(in.ReadSingleField(), Key(kCurveFactorLabel), "every spectral value is 0");
    in.ReadTextField();
    o.PrincipalAngle =
        field.Number(in.ReadNumberField(), Key(kPrincipalLabel), "the principal direction runs along X");
    in.ReadTextField();
    o.InterpMethod = field.Number(in.ReadI16Field(), Key(kInterpLabel), "the curve is interpolated linearly");

    in.ReadTextField();  // the two headings
    in.ReadTextField();
    for (int d = 1; d <= 6; ++d) {
        const std::string which = "direction " + GeneralText(i32(d));
        o.DirFactor(d) = field.Number(in.ReadSingleField(), which + " factor",
                                      "every response and base shear of the direction is 0");
        o.DirOn(d) = field.Number(in.ReadI16Field(), which + " on/off", "the direction is off");
    }

    in.ReadTextField();
    o.ShearWaveVelocity =
        field.Number(in.ReadSingleField(), Key(kShearWaveLabel), "the dialog sets no ground rotation");
    in.ReadTextField();
    const char* datum = "the rotation datum lies at 0 on that axis";
    o.GroundX = field.Number(in.ReadSingleField(), Key(kGroundLabel) + " X", datum);
    o.GroundY = field.Number(in.ReadSingleField(), Key(kGroundLabel) + " Y", datum);
    o.GroundZ = field.Number(in.ReadSingleField(), Key(kGroundLabel) + " Z", datum);
    in.ReadTextField();
    o.CombMethod = field.Number(in.ReadI16Field(), Key(kCombLabel), "the modes are combined by SRSS");
    in.ReadTextField();
    o.Duration = field.Number(in.ReadSingleField(), Key(kDurationLabel),
                              "the earthquake lasts 0 s (DSM takes 10 s, casepost is given 0.1 s)");
    in.ReadTextField();
    o.DampingRatio =
        field.Number(in.ReadSingleField(), Key(kDampingLabel),
                     "modes without a damping of their own are undamped, and CQC comes to the SRSS sum");
    in.ReadTextField();
    o.ForceSignMode =
        field.Number(in.ReadI16Field(), Key(kForceSignLabel), "the element force signs follow no mode");
    in.ReadTextField();
    o.MissMassOn = field.Number(in.ReadI16Field(), Key(kMissMassLabel), "missing mass is off");
    o.MissMassStartCase = in.ReadTextField();
    in.ReadTextField();
    o.ZpaHighestMode =
        field.Number(in.ReadI16Field(), Key(kZpaLabel), "the ZPA is taken from the curve's first point");
    in.Close();
}

// "MODEL.<ext>" in a file stands for the model in hand: the reader looks at
// the stem up to the first point, in any case, and keeps the extension after
// the last point. A name with a directory in it is never completed.
void CompleteSpectrumFileName(RunState& state) {
    std::string& name = state.Options.SpectrumFile;
    std::string stem = name.substr(0, name.find('.'));
    if (UpperCase(stem) != "MODEL") return;
    std::size_t last = name.rfind('.');
    std::string extension = last == std::string::npos ? name : name.substr(last + 1);
    name = state.Model.ModelPath + "." + Trim(extension);
}

}  // namespace

void SetCombNameFromMethod(ResponseOptions& options) {
    static const char* const kNames[] = {"SRSS", "QCQ", "10% Group", "DSM", "ABS Sum"};
    if (options.CombMethod >= 0 && options.CombMethod <= 4) options.CombName = kNames[options.CombMethod];
}

void ReadOptions(RunState& state) {
    try {
        ReadOptionItems(state);
    } catch (const Failure&) {
        // An options file that ends early or holds a bad value is merged over
        // what is in memory, without a word: both callers have made sure the
        // file exists.
    }
    SetCombNameFromMethod(state.Options);
    CompleteSpectrumFileName(state);
}

std::string FoldSpectrumFileName(const RunState& state) {
    const std::string& name = state.Options.SpectrumFile;
    std::size_t last = name.rfind('.');
    std::string stem = last == std::string::npos ? name : name.substr(0, last);
    std::string extension = last == std::string::npos ? "" : name.substr(last + 1);
    if (stem == state.Model.ModelPath) return "MODEL." + Trim(extension);
    return name;
}

void WriteOptionsFile(RunState& state) {
    const ResponseOptions& o = state.Options;
    PrintFile out(o.OptionsFile, TextMode::Output);
    out.Item(kFreqCaseLabel).Line(o.FreqCase);
    out.Item(kResultsCaseLabel).Line(o.ResultsCase);
    out.Item(kSingleModeLabel).Line(PrintItem(o.SingleMode));
    out.Item(kSpectrumFileLabel).Line(FoldSpectrumFileName(state));
    out.Item(kSpectrumTypeLabel).Line(SignedText(o.SpectrumType));
    out.Item(kCurveFactorLabel).Line(SignedText(o.CurveFactor));
    out.Item(kPrincipalLabel).Line(SignedText(o.PrincipalAngle));
    out.Item(kInterpLabel).Line(SignedText(o.InterpMethod));
    out.Line(kDirectionHeading);
    out.Line(kFactorHeading);
    for (int d = 1; d <= 6; ++d) {
        out.Item(PrintItem(o.DirFactor(d))).NextZone().Line(PrintItem(o.DirOn(d)));
    }
    out.Item(kShearWaveLabel).Line(SignedText(o.ShearWaveVelocity));
    out.Item(kGroundLabel).Item(PrintItem(o.GroundX)).Item(PrintItem(o.GroundY)).Line(PrintItem(o.GroundZ));
    out.Item(kCombLabel).Line(PrintItem(o.CombMethod));
    out.Item(kDurationLabel).Line(SignedText(o.Duration));
    out.Item(kDampingLabel).Line(SignedText(o.DampingRatio));
    out.Item(kForceSignLabel).Line(PrintItem(o.ForceSignMode));
    out.Item(kMissMassLabel).Item(PrintItem(o.MissMassOn)).Item(",").Line(o.MissMassStartCase);
    out.Item(kZpaLabel).Line(PrintItem(o.ZpaHighestMode));
    out.Close();
}

void SetRotationFactors(ResponseOptions& o) {
    // The rotations follow from the shear wave velocity of the subsoil: the
    // rotation about the major wave axis goes with the minor wave and its
    // factor, the one about the minor wave axis with the major wave. A
    // velocity of 0 switches the ground rotation off instead of dividing by it.
    const f64 vs = o.ShearWaveVelocity;
    if (vs == 0) {
        o.DirFactor(4) = o.DirFactor(5) = o.DirFactor(6) = 0;
        return;
    }
    o.DirFactor(4) = StoreF32(Div(Div(f64(o.DirFactor(3)) * 1.7, 2), vs));
    o.DirFactor(5) = StoreF32(Div(Div(2.0, 2.0), vs));
    o.DirFactor(6) = StoreF32(Div(Div(1.7, 2.0), vs));
}

void SetFreshOptions(ResponseOptions& o) {
    o.FreqCase.clear();
    o.ResultsCase.clear();
    o.SingleMode = 0;
    o.SpectrumFile.clear();
    o.SpectrumType = 2;
    o.CurveFactor = 9.81f;
    o.PrincipalAngle = 0;
    o.InterpMethod = 0;
    o.ShearWaveVelocity = 400;
    o.DirFactor(1) = 1;
    o.DirFactor(2) = 0.5f;
    o.DirFactor(3) = 0.7f;
    SetRotationFactors(o);
    for (int d = 1; d <= 6; ++d) o.DirOn(d) = d == 1 ? 1 : 0;
    o.GroundX = o.GroundY = o.GroundZ = 0;
    o.CombMethod = 1;
    o.CombName = "CQC";
    o.Duration = 10;
    o.DampingRatio = 0.05f;
    o.ForceSignMode = 0;
    o.MissMassOn = 0;
    o.MissMassStartCase = "0";
    o.ZpaHighestMode = 1;
    o.ShowModalShear = 0;
    o.CreateAccelFile = 0;
}

}  // namespace tremodal
