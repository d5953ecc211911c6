#include "report/csv_tables.h"

#include "base/number_text.h"

namespace tremodal {

namespace {

// Rows end in CR LF, as the usual form of such tables has it; every reader
// of them takes either.
constexpr const char* kRowEnd = "\r\n";

std::string Cell(f32 x) { return SignificantText(x, 9); }

}  // namespace

std::string ModesTable(const RunFigures& f) {
    std::string out =
        "mode,circular_frequency_rad_s,frequency_hz,period_s,damping_ratio,"
        "spectral_displacement,spectral_velocity,spectral_acceleration";
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
    std::string out = "direction,mode,participation_factor,effective_mass,cumulative_percent";
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
    std::string out = "direction,SRSS,CQC,GROUP,DSM,ABS";
    out += kRowEnd;
    for (const DirectionFigures& d : f.Directions) {
        if (!d.HasShear) continue;
        out += GeneralText(d.Direction);
        for (f32 shear : d.Shear) out += "," + Cell(shear);
        out += kRowEnd;
    }
    return out;
}

}  // namespace tremodal
