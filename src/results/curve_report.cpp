#include "results/curve_report.h"

#include "base/checked_math.h"
#include "base/number_text.h"
#include "modal/response_curve.h"

namespace tremodal {

void ReportSpectrum(RunState& s) {
    std::vector<std::string>& list = s.List1;
    const SpectrumCurve& curve = s.Curve;

    // The curve as the file gives it: no factor, in the file's own kind.
    list.push_back(" ");
    list.push_back("Response Spectrum Curve");
    list.push_back("Period (Secs)      Value ");
    for (i32 i = 1; i <= curve.CurvePoints; ++i) {
        list.push_back(FormatField(curve.CurvePeriod(i), "##0.000", 11) +
                       FormatField(curve.CurveValue(i), "###0.0000", 14));
    }

    // The values the analysis uses: the spectral displacement of each mode
    // with the factor in it, and the pseudo-velocity and pseudo-acceleration
    // worked from it at the mode's frequency, whatever kind the curve was.
    list.push_back(" ");
    list.push_back("Response Spectrum Curve - Modal Points");
    list.push_back("Curve Factor " + SignedText(s.Options.CurveFactor));
    // Metric models show the displacement in millimetres; only that column
    // is scaled.
    f64 multiplier = 1;
    if (s.Model.UnitSystem == 1) {
        list.push_back("Mode  Period (Secs)     Disp(ins)    Velocity(ins/s)  Accel(ins/s2)");
    } else {
        list.push_back("Mode  Period (Secs)     Disp(mm)    Velocity(ins/s)  Accel(ins/s2)");
        multiplier = 1000;
    }
    for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
        const ModalPoint p = ModalPointOf(s, m, multiplier);
        list.push_back(PadRight(SignedText(m), 4) + FormatField(p.Period, "##0.000", 11) +
                       FormatField(p.Displacement, "###0.0000", 14) +
                       FormatField(p.Velocity, "###0.0000", 14) +
                       FormatField(p.Acceleration, "###0.0000", 14));
    }
}

ModalPoint ModalPointOf(const RunState& s, i32 m, f64 displacementMultiplier) {
    const f32 omega = s.Freq.Omega(m);
    const f32 spectrum = s.Curve.ModalSpectrum(m);
    ModalPoint p;
    p.Period = ModePeriod(omega);
    p.Displacement = StoreF32(displacementMultiplier * spectrum);
    p.Velocity = StoreF32(f64(omega) * spectrum);
    p.Acceleration = StoreF32(f64(omega) * omega * spectrum);
    return p;
}

}  // namespace tremodal
