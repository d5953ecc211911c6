#include "report/chart_layout.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tremodal {

PeriodSpan SpectrumPeriodSpan(const std::vector<double>& curvePeriod, const std::vector<double>& curveValue,
                              const std::vector<double>& modePeriod, bool log) {
    double first = HUGE_VAL, last = 0, longest = 0, knee = 0, peak = -HUGE_VAL;
    for (std::size_t i = 0; i < curvePeriod.size(); ++i) {
        const double t = curvePeriod[i];
        if (!std::isfinite(t)) continue;
        if (t > 0) first = std::min(first, t);
        last = std::max(last, t);
        // The plateau ends at the last point that reaches the peak.
        if (i < curveValue.size() && curveValue[i] >= peak * (1 - 1e-6)) {
            if (curveValue[i] > peak) peak = curveValue[i];
            knee = t;
        }
    }
    for (double t : modePeriod) {
        if (!std::isfinite(t)) continue;
        if (t > 0) first = std::min(first, t);
        longest = std::max(longest, t);
    }
    PeriodSpan span;
    if (log) {
        if (!(first < HUGE_VAL)) return span;
        span.Lo = first;
        span.Hi = std::max({last, longest * 1.15, first * 10});
        return span;
    }
    const double wanted = 1.1 * std::max(longest, knee);
    if (wanted > 0 && wanted < last) {
        span.Hi = wanted;
        span.CurveEnd = last;
    } else {
        span.Hi = std::max({last, longest * 1.02, 1e-3});
    }
    return span;
}

std::string ModeLabel::Text() const {
    return First == Last ? std::to_string(First) : std::to_string(First) + "\u2013" + std::to_string(Last);
}

std::vector<ModeLabel> ModeLabels(const std::vector<double>& x, double gap,
                                  const std::function<double(const std::string&)>& width) {
    // Left to right; modes at the same period keep their order.
    std::vector<std::size_t> order(x.size());
    std::iota(order.begin(), order.end(), 0);
    std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return x[a] < x[b]; });
    struct Group {
        int first, last;
        double lo, hi;  // the positions of its modes
        ModeLabel Label(const std::function<double(const std::string&)>& width) const {
            ModeLabel l{first, last, (lo + hi) / 2, 0};
            l.Width = width(l.Text());
            return l;
        }
    };
    std::vector<Group> groups;
    for (std::size_t i : order) {
        const int number = int(i) + 1;
        groups.push_back({number, number, x[i], x[i]});
        // A label that runs into the one on its left joins it, until the
        // labels stand apart.
        while (groups.size() > 1) {
            const Group& a = groups[groups.size() - 2];
            const Group& b = groups.back();
            const ModeLabel la = a.Label(width), lb = b.Label(width);
            if (la.X + la.Width / 2 + gap <= lb.X - lb.Width / 2) break;
            const Group merged{std::min(a.first, b.first), std::max(a.last, b.last), std::min(a.lo, b.lo),
                               std::max(a.hi, b.hi)};
            groups.pop_back();
            groups.back() = merged;
        }
    }
    std::vector<ModeLabel> labels;
    for (const Group& g : groups) labels.push_back(g.Label(width));
    return labels;
}

ShareScales ParticipationScales(double totalMass, double tallestBar) {
    ShareScales s;
    const double top = std::max(totalMass, tallestBar);
    s.MassTop = top > 0 ? top * 1.08 : 1;
    if (totalMass > 0) s.PercentTop = 100 * s.MassTop / totalMass;
    return s;
}

}  // namespace tremodal
