#include "report/summary_text.h"

#include <algorithm>
#include <cmath>

#include "base/number_text.h"

namespace tremodal {

namespace {

const char* const kDirectionCaptions[] = {
    "Principal (Major wave)", "Vertical",
    "Lateral (Minor wave)",   "Rotation (Minor wave)",
    "Rotation (Vertical)",    "Rotation (Major wave)",
};
const char* const kMethodCaptions[] = {"SRSS", "CQC", "10% Group", "DSM", "ABS Sum"};
const char* const kCurveKinds[] = {"displacement", "velocity", "acceleration"};

std::string Length(const RunFigures& f) { return LengthUnit(f); }

std::string Number(f32 x) { return GeneralText(x); }

void AddModelLines(const RunFigures& f, std::vector<std::string>& out) {
    out.push_back("TreModal report of options set " + f.OptionsNumber);
    out.push_back("Model       " + f.ModelPath + "  (" + Trim(f.ModelName) + ": " + Trim(f.ModelTitle) + ")");
    std::string modes =
        "Modes       " + GeneralText(i32(f.Modes.size())) + " in frequency case " + f.FreqCase;
    if (!f.Modes.empty()) {
        f32 low = f.Modes.front().Hertz, high = low;
        f32 shortest = f.Modes.front().Point.Period, longest = shortest;
        for (const ModeFigures& m : f.Modes) {
            low = std::min(low, m.Hertz);
            high = std::max(high, m.Hertz);
            shortest = std::min(shortest, m.Point.Period);
            longest = std::max(longest, m.Point.Period);
        }
        modes += ", " + FormatPicture(low, "0.000") + " to " + FormatPicture(high, "0.000") +
                 " Hz (periods " + FormatPicture(shortest, "0.0000") + " to " +
                 FormatPicture(longest, "0.0000") + " s)";
    }
    out.push_back(modes);
}

void AddCurveLines(const RunFigures& f, std::vector<std::string>& out) {
    out.push_back("");
    out.push_back("Curve       " + f.SpectrumFile + ", " + GeneralText(i32(f.CurvePeriod.size())) +
                  " points");
    out.push_back("            " + CurveKind(f.SpectrumType) + ", factor " + Number(f.CurveFactor) + ", " +
                  (f.InterpMethod == 1 ? "logarithmic (log-log)" : "linear") + " interpolation");
    std::string source = f.ZpaHighestMode == 1
                             ? "from the highest mode (mode " + GeneralText(i32(f.Modes.size())) + ")"
                             : "from the curve's first point";
    out.push_back("ZPA         " + Number(f.ZpaValue) + " " + Length(f) + "/s2 at " +
                  FormatPicture(f.ZpaPeriod, "0.0000") + " s, " + source);
    out.push_back("Damping     " + Number(f.DampingRatio) +
                  " of critical in every mode without one of its own");
    out.push_back("Duration    " + Number(f.Duration) + " s of strong motion");
    out.push_back("Principal   at " + GeneralText(f.PrincipalAngle) + " deg from X toward Z");
}

void AddDirectionLines(const RunFigures& f, const DirectionFigures& d, std::vector<std::string>& out) {
    out.push_back("");
    out.push_back("Direction " + GeneralText(d.Direction) + ", " + DirectionCaption(d.Direction) + ", " +
                  AxisText(d) + ", factor " + Number(d.Factor) + ", " +
                  (d.Direction < 4 ? "mass " : "inertia ") + FormatPicture(d.ExcitedMass, "0.000E+00"));
    out.push_back("  Mode    Freq Hz   Period s    Eff mass   Cumul %");
    for (std::size_t i = 0; i < d.Rows.size(); ++i) {
        const ParticipationRow& r = d.Rows[i];
        out.push_back(PadLeft(GeneralText(i32(i + 1)), 6) + FormatField(r.Hertz, "##0.000", 11) +
                      FormatField(r.Period, "##0.0000", 11) + FormatField(r.Effective, "0.000E+00", 12) +
                      (d.HasPercent ? FormatField(r.Percent, "##0.00", 10) : std::string(10, ' ')));
    }
    if (!d.HasPercent) {
        out.push_back("  The direction moves nothing: no share to give.");
        return;
    }
    const i32 reach = d.ModesTo90();
    const std::string left = FormatPicture(d.MissingPercent(), "0.00") + " % is left to the missing mass" +
                             (f.MissMassOn == 1 ? " (on)" : " (off: left out)");
    if (reach > 0) {
        out.push_back("  90 % is reached with " + GeneralText(reach) + " of " +
                      GeneralText(i32(d.Rows.size())) + " modes; " + left);
    } else {
        out.push_back("  90 % is not reached; " + left);
    }
}

void AddShearLines(const RunFigures& f, std::vector<std::string>& out) {
    std::vector<const DirectionFigures*> rows;
    for (const DirectionFigures& d : f.Directions) {
        if (d.HasShear) rows.push_back(&d);
    }
    if (rows.empty()) return;
    out.push_back("");
    out.push_back("Base shear, direction factor included (* the options' method)");
    std::string head = "  Direction                ";
    for (int k = 0; k < kCombMethods; ++k)
        head += PadLeft(MethodCaption(k), 11) + (k == f.CombMethod ? "*" : " ");
    out.push_back(RTrim(head));
    for (const DirectionFigures* d : rows) {
        std::string row =
            "  " + PadRight(GeneralText(d->Direction) + " " + DirectionCaption(d->Direction), 25);
        for (int k = 0; k < kCombMethods; ++k)
            row += FormatField(d->Shear[std::size_t(k)], "0.000E+00", 11) + " ";
        out.push_back(RTrim(row));
    }
    if (f.SingleMode > 0) out.push_back("  Only mode " + GeneralText(f.SingleMode) + " is combined.");
}

void AddStoreyShearLines(const RunFigures& f, const DirectionFigures& d, std::vector<std::string>& out) {
    if (d.StoreyHeights.empty()) return;
    out.push_back("");
    out.push_back("Storey shear, direction " + GeneralText(d.Direction) + " " +
                  DirectionCaption(d.Direction) + ": the inertia forces at and above each level, " +
                  ForceUnit(f));
    std::string head = "  Height " + PadRight(Length(f), 9);
    for (int k = 0; k < kCombMethods; ++k) {
        if (!d.StoreyShear[std::size_t(k)].empty())
            head += PadLeft(MethodCaption(k), 11) + (k == f.CombMethod ? "*" : " ");
    }
    out.push_back(RTrim(head));
    for (std::size_t l = 0; l < d.StoreyHeights.size(); ++l) {
        std::string row = FormatField(d.StoreyHeights[l], "##0.000", 10) + std::string(8, ' ');
        for (const std::vector<f32>& shear : d.StoreyShear) {
            if (!shear.empty()) row += FormatField(shear[l], "0.000E+00", 11) + " ";
        }
        out.push_back(RTrim(row));
    }
}

}  // namespace

std::string LengthUnit(const RunFigures& f) { return f.UnitSystem == 1 ? "in" : "m"; }

std::string MassUnit(const RunFigures& f, bool rotation) {
    if (f.UnitSystem == 1) return rotation ? "lbf s2 in" : "lbf s2/in";
    return rotation ? "kg m2" : "kg";
}

std::string ForceUnit(const RunFigures& f) { return f.UnitSystem == 1 ? "lbf" : "N"; }

std::string AxisText(const DirectionFigures& d) {
    const bool turn = d.Direction >= 4;
    if (d.Direction == 2 || d.Direction == 5) return turn ? "about Y (vertical)" : "along Y (vertical)";
    std::string axis;
    if (std::fabs(d.AxisZ) < 1e-12) {
        axis = d.AxisX < 0 ? "-X" : "X";
    } else if (std::fabs(d.AxisX) < 1e-12) {
        axis = d.AxisZ < 0 ? "-Z" : "Z";
    } else {
        axis =
            "(" + FormatPicture(f32(d.AxisX), "0.000") + ", 0, " + FormatPicture(f32(d.AxisZ), "0.000") + ")";
    }
    return (turn ? "about " : "along ") + axis;
}

std::string CurveUnit(const RunFigures& f) {
    if (f.SpectrumType == 1) return LengthUnit(f) + "/s";
    if (f.SpectrumType == 2) return LengthUnit(f) + "/s2";
    return LengthUnit(f);
}

std::string CurveKind(i16 spectrumType) {
    if (spectrumType >= 0 && spectrumType <= 2) return kCurveKinds[spectrumType];
    return "kind " + GeneralText(spectrumType) + " (taken as displacement, no factor)";
}

std::string DirectionCaption(i16 d) {
    if (d >= 1 && d <= 6) return kDirectionCaptions[d - 1];
    return "direction " + GeneralText(d);
}

std::string MethodCaption(int method) {
    if (method >= 0 && method < kCombMethods) return kMethodCaptions[method];
    return "method " + GeneralText(i32(method));
}

std::vector<std::string> SuspectInputNotes(const RunFigures& f) {
    std::vector<std::string> notes;
    if (f.MassFormRead == 0) {
        notes.push_back(
            "The mass is a square block: only its diagonal counts, the terms off it are left out.");
    } else if (f.MassFormRead == 2) {
        notes.push_back("The frequency case gives mass form 2: its mass is read as a lumped one.");
    } else if (f.MassFormRead != 1) {
        notes.push_back("The frequency case gives mass form " + GeneralText(f.MassFormRead) +
                        ": no mass is read, and every participation factor is 0.");
    }
    if (f.MissMassOn == 1 && !f.CurvePeriod.empty() && f.CurvePeriod.front() == 0) {
        notes.push_back(
            "The curve's first period is 0 while missing mass is on: the pseudo-mode takes the "
            "frequency of that point; start the curve at the ZPA period instead.");
    }
    if (f.StoppedAtGuard()) {
        notes.push_back("Single mode " + GeneralText(f.SingleMode) + " lies beyond the " +
                        GeneralText(i32(f.Modes.size())) + " modes: the run stops before the directions.");
    }
    for (const DirectionFigures& d : f.Directions) {
        if (!d.HasPercent || d.ModesTo90() > 0) continue;
        const f32 reached = d.Rows.empty() ? 0.0f : d.Rows.back().Percent;
        notes.push_back("Direction " + GeneralText(d.Direction) + " reaches only " +
                        FormatPicture(reached, "0.00") + " % with all its modes, below 90 %" +
                        (f.MissMassOn == 1 ? "; the missing mass carries the rest."
                                           : ": add modes or turn missing mass on."));
    }
    const auto noted = [&](const char* key) {
        return std::any_of(f.RunNotes.begin(), f.RunNotes.end(),
                           [&](const std::string& note) { return note.find(key) != std::string::npos; });
    };
    if (f.CurveFactor == 0 && !noted("Curve Factor"))
        notes.push_back("The curve factor is 0: every spectral value, response and base shear is 0.");
    if (f.DampingRatio == 0 && !noted("Damping Ratio"))
        notes.push_back(
            "The damping ratio is 0: modes without a damping of their own are undamped, and CQC "
            "comes to the SRSS sum.");
    if (f.Directions.empty() && !f.StoppedAtGuard())
        notes.push_back("No direction is on: nothing takes part and there is no base shear.");
    for (const std::string& note : f.RunNotes) notes.push_back(note);
    for (const std::string& message : f.Messages) notes.push_back("The run says: \"" + message + "\"");
    return notes;
}

std::vector<std::string> SummaryLines(const RunFigures& f) {
    std::vector<std::string> out;
    AddModelLines(f, out);
    AddCurveLines(f, out);
    for (const DirectionFigures& d : f.Directions) AddDirectionLines(f, d, out);
    AddShearLines(f, out);
    for (const DirectionFigures& d : f.Directions) AddStoreyShearLines(f, d, out);
    const std::vector<std::string> notes = SuspectInputNotes(f);
    if (!notes.empty()) {
        out.push_back("");
        out.push_back("Notes");
        for (const std::string& note : notes) out.push_back("  - " + note);
    }
    return out;
}

}  // namespace tremodal
