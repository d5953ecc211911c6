#include "results/participation_report.h"

#include <algorithm>

#include "base/checked_math.h"
#include "base/number_text.h"
#include "modal/response_curve.h"

namespace tremodal {

namespace {

constexpr const char* kDirectionLines[] = {
    "Excitation X Direction ", "Excitation Y Direction ", "Excitation Z Direction ",
    "Excitation Rx Rotation ", "Excitation Ry Rotation ", "Excitation Rz Rotation ",
};

}  // namespace

void ReportParticipation(RunState& s, i16 d) {
    if (d < 1 || d > 6) Fail(kSubscriptOutOfRange, "direction out of range");
    std::vector<std::string>& list = s.List1;
    list.push_back(" ");
    list.push_back("Total Mass (excl mass on rest.)" + FormatField(s.ExcitedMass, "0.000E+00", 10) +
                   "  Load Case Mass" + FormatField(s.Freq.DirMass(1), "0.000E+00", 10));
    list.push_back(kDirectionLines[d - 1] + SignedText(d));
    list.push_back("Mode    Freq   Freq    Period     Modal    Cumulative       Damping");
    list.push_back("No      Rad/s  Hertz   Seconds   Eff Mass   Eff Mass   %    Ratio ");
    list.push_back(" ");

    // A rotation moves no mass in the translational sense, so its rows
    // carry no share of the excited mass.
    i32 m = 0;
    for (const ParticipationRow& r : ParticipationRows(s, d < 4)) {
        // The mode column is four wide; from mode 1000 on the number runs over.
        std::string row = PadRight(SignedText(++m), 4) + FormatField(r.Omega, "##0.00", 8) +
                          FormatField(r.Hertz, "##0.00", 8) + FormatField(r.Period, "#0.0000", 10) +
                          FormatField(r.Effective, "0.000E+00", 11) +
                          FormatField(r.Cumulative, "0.000E+00", 11);
        if (d < 4) row += FormatField(r.Percent, "#0.00", 7);
        row += FormatField(s.ModalDamping(m), "#0.00", 6);
        list.push_back(row);
    }
    list.push_back(" ");
}

std::vector<ParticipationRow> ParticipationRows(const RunState& s, bool percent) {
    // The modal effective mass is the participation factor squared: the mode
    // shapes are mass-normalised, so no modal mass is divided out. The running
    // sum starts afresh in every direction and is rounded to single on every
    // addition: the suite compares these bits.
    std::vector<ParticipationRow> rows;
    rows.reserve(std::size_t(std::max(s.Freq.NumModes, 0)));
    f32 cumulative = 0;
    for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
        ParticipationRow r;
        r.Omega = s.Freq.Omega(m);
        r.Hertz = ModeHertz(r.Omega);
        r.Period = ModePeriod(r.Omega);
        r.Effective = StoreF32(f64(s.Participation(m)) * s.Participation(m));
        cumulative = StoreF32(f64(cumulative) + r.Effective);
        r.Cumulative = cumulative;
        if (percent) r.Percent = StoreF32(Div(cumulative, s.ExcitedMass) * 100);
        rows.push_back(r);
    }
    return rows;
}

}  // namespace tremodal
