#include "report/csv_tables.h"

#include "base/number_text.h"
#include "report/summary_text.h"

namespace tremodal {

namespace {

// Rows end in CR LF, as the usual form of such tables has it; every reader
// of them takes either.
constexpr const char* kRowEnd = "\r\n";

// Each single as the shortest decimal that reads back as itself.
std::string Cell(f32 x) { return ShortestText(x); }

std::string Unit(const std::string& unit) { return " [" + unit + "]"; }

// The five methods' columns, each with the unit of force.
std::string MethodColumns(const RunFigures& f) {
    std::string columns;
    for (const char* method : {"SRSS", "CQC", "GROUP", "DSM", "ABS"})
        columns += std::string(",") + method + Unit(ForceUnit(f));
    return columns;
}

}  // namespace

std::string ModesTable(const RunFigures& f) {
    const std::string length = LengthUnit(f);
    std::string out =
        "mode,circular_frequency [rad/s],frequency [Hz],period [s],damping_ratio,"
        "spectral_displacement" +
        Unit(length) + ",spectral_velocity" + Unit(length + "/s") + ",spectral_acceleration" +
        Unit(length + "/s2");
    out += kRowEnd;
    for (std::size_t i = 0; i < f.Modes.size(); ++i) {
        const ModeFigures& m = f.Modes[i];
        out += GeneralText(i32(i + 1)) + "," + Cell(m.Omega) + "," + Cell(m.Hertz) + "," +
               Cell(m.Point.Period) + "," + Cell(m.Damping) + "," + Cell(m.Point.Displacement) + "," +
               Cell(m.Point.Velocity) + "," + Cell(m.Point.Acceleration) + kRowEnd;
    }
    return out;
}

std::string ParticipationTable(const RunFigures& f) {
    // Rotations carry an inertia where translations carry a mass.
    std::string out = "direction,mode,participation_factor" +
                      Unit(MassUnit(f, false) + "^0.5; (" + MassUnit(f, true) + ")^0.5 for 4 to 6") +
                      ",effective_mass" +
                      Unit(MassUnit(f, false) + "; " + MassUnit(f, true) + " for 4 to 6") + ",cumulative [%]";
    out += kRowEnd;
    for (const DirectionFigures& d : f.Directions) {
        for (std::size_t i = 0; i < d.Rows.size(); ++i) {
            out += GeneralText(d.Direction) + "," + GeneralText(i32(i + 1)) + "," + Cell(d.Participation[i]) +
                   "," + Cell(d.Rows[i].Effective) + "," + (d.HasPercent ? Cell(d.Rows[i].Percent) : "") +
                   kRowEnd;
        }
    }
    return out;
}

std::string BaseShearTable(const RunFigures& f) {
    std::string out = "direction" + MethodColumns(f);
    out += kRowEnd;
    for (const DirectionFigures& d : f.Directions) {
        if (!d.HasShear) continue;
        out += GeneralText(d.Direction);
        for (f32 shear : d.Shear) out += "," + Cell(shear);
        out += kRowEnd;
    }
    return out;
}

std::string StoreyShearTable(const RunFigures& f) {
    std::string out = "direction,height" + Unit(LengthUnit(f)) + MethodColumns(f);
    out += kRowEnd;
    for (const DirectionFigures& d : f.Directions) {
        for (std::size_t l = 0; l < d.StoreyHeights.size(); ++l) {
            out += GeneralText(d.Direction) + "," + Cell(d.StoreyHeights[l]);
            for (const std::vector<f32>& shear : d.StoreyShear)
                out += "," + (shear.empty() ? "" : Cell(shear[l]));
            out += kRowEnd;
        }
    }
    return out;
}

}  // namespace tremodal
