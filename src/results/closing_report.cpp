#include "results/closing_report.h"

#include "base/checked_math.h"
#include "base/number_text.h"
#include "modal/base_shear.h"

namespace tremodal {

void AddMissingMassBlock(RunState& s) {
    const ResponseOptions& o = s.Options;
    const f64 startCase = Val(o.MissMassStartCase);
    std::string zpa = "   ZPA   m/s2    ";
    std::string cases = "   St Load Case";
    std::string totals = "   Total Loads  ";
    for (int i = 1; i <= 3; ++i) {
        zpa += FormatField(StoreF32(f64(s.Curve.ZpaValue) * o.DirFactor(i)), "0.000E-00", 12);
        cases += FormatField(StoreF32(startCase + i - 1), "0", 12);
        totals += FormatField(s.MissMassLoad(i), "0.000E-00", 12);
    }
    s.List1.push_back(" ");
    s.List1.push_back(
        "Missing Mass Loads  ZPA         Period = " + FormatField(s.Curve.ZpaPeriod, "0.000", 6) + " Sec " +
        FormatField(StoreF32(Div(1, s.Curve.ZpaPeriod)), "0.00", 6) + " Hz");
    s.List1.push_back("                      Fxe         Fye         Fze ");
    s.List1.push_back(zpa);
    s.List1.push_back(cases);
    s.List1.push_back(totals);
}

void AddBaseShearBlock(RunState& s) {
    const ResponseOptions& o = s.Options;
    s.List1.push_back(" ");
    if (o.SingleMode != 0) {
        s.List1.push_back("Only Mode " + GeneralText(o.SingleMode) + " ACTIVE");
        s.List1.push_back("Base Shear Loads due to Translational Motion");
    } else {
        s.List1.push_back("Base Shear Components due to Translational Motion  Comb-" + Trim(o.CombName));
    }
    if (i32(o.DirOn(4)) + o.DirOn(5) + o.DirOn(6) > 0) {
        s.List1.push_back("Effect of ground rotation is not included");
    }
    s.List1.push_back("              Fxe         Fye          Fze ");
    std::string total = "Total  ";
    for (int i = 1; i <= 3; ++i) {
        total += FormatField(CombinedShear(s.BaseShear(i), o.CombMethod), "0.000E-00", 12);
    }
    s.List1.push_back(total);
}

}  // namespace tremodal
