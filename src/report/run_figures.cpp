#include "report/run_figures.h"

#include <algorithm>

#include "modal/base_shear.h"
#include "modal/excitation.h"
#include "modal/response_curve.h"
#include "results/curve_report.h"

namespace tremodal {

i32 DirectionFigures::ModesTo90() const {
    if (!HasPercent) return 0;
    for (std::size_t i = 0; i < Rows.size(); ++i) {
        if (Rows[i].Percent >= 90.0f) return i32(i + 1);
    }
    return 0;
}

f32 DirectionFigures::MissingPercent() const {
    if (!HasPercent) return 0;
    // Modes that reach all of the mass pass 100 % by a rounding.
    return Rows.empty() ? 100.0f : std::max(0.0f, 100.0f - Rows.back().Percent);
}

bool RunFigures::StoppedAtGuard() const { return SingleMode > 0 && i32(Modes.size()) < SingleMode; }

void RecordDirection(RunState& s, i16 d, RunFigures& figures, bool everyMethod) {
    DirectionFigures f;
    f.Direction = d;
    f.Factor = s.Options.DirFactor(d);
    f.ExcitedMass = s.ExcitedMass;
    for (i32 m = 1; m <= s.Freq.NumModes; ++m) f.Participation.push_back(s.Participation(m));
    // A rotation's table has no share in the report; here it gets one where
    // it moves any inertia at all.
    f.HasPercent = d < 4 || s.ExcitedMass != 0;
    f.Rows = ParticipationRows(s, f.HasPercent);
    if (d != 2 && d != 5) ExcitationAngle(s, d, f.AxisX, f.AxisZ);
    if (d < 4) {
        const StoreySums sums = SumStoreys(s);
        f.StoreyHeights = sums.Heights;
        for (i16 k = 0; k < kCombMethods; ++k) {
            if (everyMethod || k == s.Options.CombMethod)
                f.StoreyShear[std::size_t(k)] = CombineStoreyShears(s, d, k, sums);
        }
    }
    if (everyMethod && d < 4) {
        f.HasShear = true;
        const i16 method = s.Options.CombMethod;
        const f32 stored = s.BaseShear(d);
        for (i16 k = 0; k < kCombMethods; ++k) {
            s.Options.CombMethod = k;
            CombineBaseShear(s, d);
            f.Shear[std::size_t(k)] = CombinedShear(s.BaseShear(d), k);
        }
        s.Options.CombMethod = method;
        s.BaseShear(d) = stored;
    }
    figures.Directions.push_back(std::move(f));
}

void RecordRun(const RunState& s, RunFigures& figures) {
    const ResponseOptions& o = s.Options;
    figures.ModelPath = s.Model.ModelPath;
    figures.ModelName = s.Model.ModelName;
    figures.ModelTitle = s.Model.ModelTitle;
    figures.UnitSystem = s.Model.UnitSystem;
    figures.OptionsNumber = o.OptionsNumber;
    figures.FreqCase = o.FreqCase;
    figures.SpectrumFile = o.SpectrumFile;
    figures.MassForm = s.Freq.MassForm;
    figures.MassFormRead = s.Freq.MassFormRead;
    figures.SpectrumType = o.SpectrumType;
    figures.InterpMethod = o.InterpMethod;
    figures.ZpaHighestMode = o.ZpaHighestMode;
    figures.CurveFactor = o.CurveFactor;
    figures.CurvePeriod.clear();
    figures.CurveValue.clear();
    for (i32 i = 1; i <= s.Curve.CurvePoints; ++i) {
        figures.CurvePeriod.push_back(s.Curve.CurvePeriod(i));
        figures.CurveValue.push_back(s.Curve.CurveValue(i));
    }
    figures.ZpaValue = s.Curve.ZpaValue;
    figures.ZpaPeriod = s.Curve.ZpaPeriod;
    figures.MissMassOn = o.MissMassOn;
    figures.SingleMode = o.SingleMode;
    figures.CombMethod = o.CombMethod;
    figures.DampingRatio = o.DampingRatio;
    figures.Duration = o.Duration;
    figures.PrincipalAngle = o.PrincipalAngle;
    figures.Modes.clear();
    for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
        ModeFigures mode;
        mode.Omega = s.Freq.Omega(m);
        mode.Hertz = ModeHertz(mode.Omega);
        mode.Damping = s.ModalDamping(m);
        mode.Point = ModalPointOf(s, m);
        figures.Modes.push_back(mode);
    }
}

f32 CurveKindValue(const ModalPoint& point, i16 spectrumType) {
    if (spectrumType == 0) return point.Displacement;
    if (spectrumType == 1) return point.Velocity;
    return point.Acceleration;
}

}  // namespace tremodal
