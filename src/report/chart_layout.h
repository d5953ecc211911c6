// Where the parts of a chart go, worked out without drawing: the span of the
// period axis, the mode labels that find room, and the two scales of the
// participation chart. The charts draw what these functions decide.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tremodal {

// The period axis of the spectrum chart, in seconds. A linear axis runs from
// 0 to a little past the longest mode and the end of the curve's plateau; a
// logarithmic one from the first positive period (of the curve, or of a mode
// below it) to the last. CurveEnd is the curve's last period where the axis
// stops short of it, 0 where it shows the whole curve.
struct PeriodSpan {
    double Lo = 0, Hi = 1;
    double CurveEnd = 0;
};
PeriodSpan SpectrumPeriodSpan(const std::vector<double>& curvePeriod, const std::vector<double>& curveValue,
                              const std::vector<double>& modePeriod, bool log);

// A label of one mode, or of a run of neighbouring modes ("4–9"), centred
// at X over its width.
struct ModeLabel {
    int First = 0, Last = 0;  // mode numbers from 1
    double X = 0, Width = 0;
    std::string Text() const;
};
// Labels for modes at the positions x (mode i + 1 at x[i]) that stand apart
// by at least gap: a crowd of modes shares one label of its first and last
// number. width gives the width of a label's text.
std::vector<ModeLabel> ModeLabels(const std::vector<double>& x, double gap,
                                  const std::function<double(const std::string&)>& width);

// The participation chart's scales, both from 0: the mass axis up to MassTop
// and the share axis up to PercentTop, so that the total mass stands level
// with 100 % and the tallest bar or the total, with some room, fits.
struct ShareScales {
    double MassTop = 1, PercentTop = 105;
};
ShareScales ParticipationScales(double totalMass, double tallestBar);

}  // namespace tremodal
