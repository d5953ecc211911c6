#include "modal/response_curve.h"

#include <vector>

#include "base/checked_math.h"
#include "base/host.h"
#include "base/number_text.h"
#include "base/text_files.h"

namespace tremodal {

namespace {

// Period numerator of the table lookup. Deliberately not 2 pi: the suite has
// always looked modes up at 6.284 / omega, and its curves are tuned to it.
constexpr f64 kLookupNumerator = 6.284;
// 2 pi as the reports use it, for the period of the highest mode.
constexpr f64 kTwoPi = 6.28318530717958;
// Stands in for a period of 0 before its logarithm is taken.
constexpr f32 kZeroPeriod = 1e-5f;
constexpr f32 kEndMarker = -1.0f;
constexpr int kMaxPoints = 100;
// The message of a curve that cannot be read; the run goes on without it.
constexpr const char* kSpectrumErrorText = "Error in Spectrum Data";

// Reads the alternating period, value pairs up to the end marker. A marker
// may stand in the place of a 101st period, anything else there is an error;
// the points read before it stay.
void ReadCurvePoints(RunState& s) {
    TextInput in(s.Options.SpectrumFile);
    for (i16 i = 1;; ++i) {
        const f32 x = in.ReadSingleField();
        if (x == kEndMarker) {
            s.Curve.CurvePoints = i16(i - 1);
            break;
        }
        if (i > kMaxPoints) Fail(kSubscriptOutOfRange, "more than 100 points in the spectrum curve");
        s.Curve.CurvePeriod(i) = x;
        s.Curve.CurveValue(i) = in.ReadSingleField();
    }
    in.Close();
}

// The curve at the (possibly logarithmic) period t: straight-line
// interpolation in the first interval that holds t, the end values beyond
// either end. Each interval that does not hold t repeats the end tests, so a
// mode caught by none of them keeps what it had.
void InterpolateMode(RunState& s, const Array1<f32>& workPeriod, const Array1<f32>& workValue, i32 m, f32 t) {
    const i16 points = s.Curve.CurvePoints;
    for (i16 k = 1; k <= points - 1; ++k) {
        const f64 p0 = workPeriod(k), p1 = workPeriod(k + 1);
        if (t >= p0 && t <= p1) {
            const f64 v0 = workValue(k), v1 = workValue(k + 1);
            s.Curve.ModalSpectrum(m) = StoreF32(Div((v1 - v0) * (f64(t) - p0), p1 - p0) + v0);
            return;
        }
        if (t > workPeriod(points)) s.Curve.ModalSpectrum(m) = workValue(points);
        if (t < workPeriod(1)) s.Curve.ModalSpectrum(m) = workValue(1);
    }
}

// Turns the interpolated curve values into spectral displacements and, when
// the zero period acceleration comes from the curve, takes it from point 1.
// The ZPA is an acceleration without the curve factor; omega(1) stands in for
// the frequency of point 1 in the displacement and velocity rows.
void ConvertToDisplacement(RunState& s, f32 firstValue) {
    const f64 factor = s.Options.CurveFactor;
    const i32 modes = s.Freq.NumModes;
    const bool zpaFromCurve = s.Options.ZpaHighestMode == 0;
    const f64 omega1 = s.Freq.Omega(1);
    switch (s.Options.SpectrumType) {
        case 0:
            for (i32 m = 1; m <= modes; ++m) {
                s.Curve.ModalSpectrum(m) = StoreF32(factor * s.Curve.ModalSpectrum(m));
            }
            if (zpaFromCurve) s.Curve.ZpaValue = StoreF32(omega1 * firstValue * omega1);
            break;
        case 1:
            for (i32 m = 1; m <= modes; ++m) {
                s.Curve.ModalSpectrum(m) = StoreF32(Div(factor * s.Curve.ModalSpectrum(m), s.Freq.Omega(m)));
            }
            if (zpaFromCurve) s.Curve.ZpaValue = StoreF32(omega1 * firstValue);
            break;
        case 2:
            for (i32 m = 1; m <= modes; ++m) {
                const f64 omega = s.Freq.Omega(m);
                s.Curve.ModalSpectrum(m) = StoreF32(Div(factor * s.Curve.ModalSpectrum(m), omega * omega));
            }
            if (zpaFromCurve) s.Curve.ZpaValue = firstValue;
            break;
        default:
            break;  // an unknown kind is left as interpolated, without factor
    }
}

// "mode 4", "modes 4 and 5", "modes 4, 5 and 9", "12 modes (4 to 20)".
std::string ModeList(const std::vector<i32>& modes) {
    if (modes.size() == 1) return "mode " + GeneralText(modes[0]);
    if (modes.size() > 3) {
        return GeneralText(i32(modes.size())) + " modes (" + GeneralText(modes.front()) + " to " +
               GeneralText(modes.back()) + ")";
    }
    std::string list = "modes " + GeneralText(modes[0]);
    for (std::size_t i = 1; i < modes.size(); ++i)
        list += (i + 1 == modes.size() ? " and " : ", ") + GeneralText(modes[i]);
    return list;
}

// Modes that the curve does not reach take the value of its nearer end: the
// person is told which modes and what value, in the curve's own units.
// lookup holds each mode's period as the interpolation looked it up.
void NoteModesOffTheCurve(RunState& s, const std::vector<f32>& lookup) {
    const i16 points = s.Curve.CurvePoints;
    if (!s.Ui || points < 1) return;
    const f32 first = s.Curve.CurvePeriod(1), last = s.Curve.CurvePeriod(points);
    std::vector<i32> beyond, before;
    for (std::size_t i = 0; i < lookup.size(); ++i) {
        if (lookup[i] > last) beyond.push_back(i32(i + 1));
        if (lookup[i] < first) before.push_back(i32(i + 1));
    }
    const std::string& file = s.Options.SpectrumFile;
    if (!beyond.empty()) {
        s.Ui->Note(file + ": " + ModeList(beyond) + (beyond.size() == 1 ? " lies" : " lie") +
                   " beyond the curve's last period " + GeneralText(last) + " s and " +
                   (beyond.size() == 1 ? "takes" : "take") + " its last value " +
                   GeneralText(s.Curve.CurveValue(points)));
    }
    if (!before.empty()) {
        s.Ui->Note(file + ": the curve starts at period " + GeneralText(first) + " s and does not reach " +
                   ModeList(before) +
                   ", of higher frequency: " + (before.size() == 1 ? "it takes" : "they take") +
                   " its first value " + GeneralText(s.Curve.CurveValue(1)));
    }
}

}  // namespace

void ReadSpectrumCurve(RunState& s) {
    try {
        ReadCurvePoints(s);
        const i16 points = s.Curve.CurvePoints;
        const bool logarithmic = s.Options.InterpMethod == 1;

        // Under logarithmic interpolation both axes are natural logarithms
        // (log-log); the curve itself stays in its own units.
        Array1<f32> workPeriod(kMaxPoints), workValue(kMaxPoints);
        for (i16 i = 1; i <= points; ++i) {
            if (logarithmic) {
                workValue(i) = StoreF32(Log(s.Curve.CurveValue(i)));
                f32 period = s.Curve.CurvePeriod(i);
                if (period == 0) period = kZeroPeriod;
                workPeriod(i) = StoreF32(Log(period));
            } else {
                workPeriod(i) = s.Curve.CurvePeriod(i);
                workValue(i) = s.Curve.CurveValue(i);
            }
        }

        // The peak in curve units; the first of equal highest values wins.
        f32 peakValue = 0, peakPeriod = 0;
        for (i16 i = 1; i <= points; ++i) {
            if (s.Curve.CurveValue(i) > peakValue) {
                peakValue = s.Curve.CurveValue(i);
                peakPeriod = s.Curve.CurvePeriod(i);
            }
        }

        const i32 modes = s.Freq.NumModes;
        std::vector<f32> lookup;
        for (i32 m = 1; m <= modes; ++m) {
            f32 t = StoreF32(Div(kLookupNumerator, s.Freq.Omega(m)));
            lookup.push_back(t);
            if (logarithmic) t = StoreF32(Log(t));
            InterpolateMode(s, workPeriod, workValue, m, t);
        }
        NoteModesOffTheCurve(s, lookup);

        // Back to curve units. Only point 1 is used from here on.
        if (logarithmic) {
            for (i32 m = 1; m <= modes; ++m)
                s.Curve.ModalSpectrum(m) = StoreF32(Exp(s.Curve.ModalSpectrum(m)));
            workPeriod(1) = StoreF32(Exp(workPeriod(1)));
            workValue(1) = StoreF32(Exp(workValue(1)));
        }

        ConvertToDisplacement(s, workValue(1));

        s.Curve.ZpaPeriod = workPeriod(1);
        if (s.Options.ZpaHighestMode == 1) {
            // The highest mode by position stands for the rigid range; its
            // spectral acceleration carries the curve factor.
            const f64 omega = s.Freq.Omega(modes);
            s.Curve.ZpaValue = StoreF32(omega * omega * s.Curve.ModalSpectrum(modes));
            s.Curve.ZpaPeriod = ModePeriod(omega);
        }

        // A ZPA that lies beyond the peak of the curve yet below it is
        // suspicious for the missing mass: warn, and go on.
        if (s.Options.MissMassOn == 1 && s.Curve.ZpaPeriod > peakPeriod && s.Curve.ZpaValue < peakValue) {
            if (s.Ui) s.Ui->ShowMessage("ZPA Period > Tmax Period - Check", "TREMODAL");
        }
    } catch (const Failure& failure) {
        // One trap over the whole read: the run goes on with what stands.
        if (s.Ui) {
            s.Ui->ShowMessage(kSpectrumErrorText, "TREMODAL");
            std::string what = failure.what();
            if (what.find(s.Options.SpectrumFile) == std::string::npos)
                what = "curve " + s.Options.SpectrumFile + ": " + what;
            s.Ui->Note(
                what +
                "; the run goes on without the curve: every spectral value not worked out by then is 0");
        }
    }
}

f32 ModePeriod(f32 omega) { return StoreF32(Div(kTwoPi, omega)); }
f32 ModeHertz(f32 omega) { return StoreF32(f64(omega) / 2 / 3.14159265358979); }

}  // namespace tremodal
