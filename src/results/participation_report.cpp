#include "results/participation_report.h"

#include "runcontrol/checked_math.h"
#include "runcontrol/number_text.h"
#include "modal/response_curve.h"

namespace tremodal {

namespace {

constexpr const char* kDirectionLines[] = {
    "Excitation X Direction ",  "Excitation Y Direction ",  "Excitation Z Direction ",
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

    // The modal effective mass is the participation factor squared: the mode
    // shapes are mass-normalised, so no modal mass is divided out. The running
    // sum starts afresh in every direction and is rounded to single on every
    // addition: the suite compares these bits.
    f32 cumulative = 0;
    for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
        const f32 omega = s.Freq.Omega(m);
        const f32 hertz = StoreF32(f64(omega) / 2 / 3.14159265358979);
        const f32 period = ModePeriod(omega);
        const f32 effective = StoreF32(f64(s.Participation(m)) * s.Participation(m));
        cumulative = StoreF32(f64(cumulative) + effective);

        // The mode column is four wide; from mode 1000 on the number runs over.
        std::string row = PadRight(SignedText(m), 4) + FormatField(omega, "##0.00", 8) + FormatField(hertz, "##0.00", 8) +
                          FormatField(period, "#0.0000", 10) + FormatField(effective, "0.000E+00", 11) +
                          FormatField(cumulative, "0.000E+00", 11);
        // A rotation moves no mass in the translational sense, so its rows
        // carry no share of the excited mass.
        if (d < 4) {
            const f32 percent = StoreF32(Div(cumulative, s.ExcitedMass) * 100);
            row += FormatField(percent, "#0.00", 7);
        }
        row += FormatField(s.ModalDamping(m), "#0.00", 6);
        list.push_back(row);
    }
    list.push_back(" ");
}

}  // namespace tremodal
