#include "view/report_charts.h"

#include <QBuffer>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "base/number_text.h"
#include "report/chart_layout.h"
#include "report/summary_text.h"

namespace tremodal {

namespace {

const QColor kCurveColour(31, 95, 170);
const QColor kModeColour(200, 40, 40);
const QColor kBarColour(90, 140, 200);
const QColor kCumulativeColour(230, 120, 20);
const QColor kGridColour(220, 220, 220);

QString Q(const std::string& text) { return QString::fromStdString(text); }

// Units as a printed page shows them: "kg m2" as kg·m², "m/s2" as m/s².
QString Printed(const std::string& unit) {
    return Q(unit).replace(' ', QChar(0x00B7)).replace("s2", "s\u00B2").replace("m2", "m\u00B2");
}

// One axis: a linear or a logarithmic (base 10) scale from lo to hi.
struct Scale {
    double lo = 0, hi = 1;
    bool log = false;

    double Fraction(double v) const {
        if (log) return (std::log10(v) - std::log10(lo)) / (std::log10(hi) - std::log10(lo));
        return (v - lo) / (hi - lo);
    }
};

// Steps of 1, 2 or 5 times a power of ten, about `count` of them over the range.
double NiceStep(double range, int count) {
    const double raw = range / count;
    const double power = std::pow(10.0, std::floor(std::log10(raw)));
    const double f = raw / power;
    return (f < 1.5 ? 1 : f < 3 ? 2 : f < 7 ? 5 : 10) * power;
}

// A linear scale over [lo, hi] widened to whole steps.
Scale LinearScale(double lo, double hi, int count = 6) {
    if (!(hi > lo)) hi = lo + (lo == 0 ? 1 : std::fabs(lo));
    const double step = NiceStep(hi - lo, count);
    return {std::floor(lo / step) * step, std::ceil(hi / step) * step, false};
}

std::vector<double> LinearTicks(const Scale& s, int count = 6) {
    std::vector<double> ticks;
    const double step = NiceStep(s.hi - s.lo, count);
    for (double k = std::ceil(s.lo / step - 1e-9); k * step <= s.hi + step * 1e-9; k += 1)
        ticks.push_back(k * step);
    return ticks;
}

// A logarithmic scale over whole decades holding [lo, hi], both above 0.
Scale LogScale(double lo, double hi) {
    double a = std::floor(std::log10(lo)), b = std::ceil(std::log10(hi));
    if (b <= a) b = a + 1;
    return {std::pow(10.0, a), std::pow(10.0, b), true};
}

// The decades within the scale, and 2 and 5 times them where the decades
// are few.
std::vector<double> LogTicks(const Scale& s) {
    std::vector<double> ticks;
    const int first = int(std::floor(std::log10(s.lo) + 1e-9)),
              last = int(std::ceil(std::log10(s.hi) - 1e-9));
    const bool between = last - first <= 3;
    for (int k = first; k <= last; ++k) {
        for (double m : {1.0, 2.0, 5.0}) {
            const double t = m * std::pow(10.0, k);
            if ((m == 1 || between) && t >= s.lo * (1 - 1e-6) && t <= s.hi * (1 + 1e-6)) ticks.push_back(t);
        }
    }
    return ticks;
}

QString TickText(double v) {
    if (std::fabs(v) < 1e-12) return "0";
    return Q(SignificantText(v, 6));
}

// The plotting area of a chart and its scales; y2 is the right-hand axis.
struct Frame {
    QRectF area;
    Scale x, y, y2;
    double unit = 1;  // pixels of a chart of the standard size

    double X(double v) const { return area.left() + x.Fraction(v) * area.width(); }
    double Y(double v) const { return area.bottom() - y.Fraction(v) * area.height(); }
    double Y2(double v) const { return area.bottom() - y2.Fraction(v) * area.height(); }
};

QFont ChartFont(double pixels, bool bold = false) {
    QFont font("DejaVu Sans");
    font.setPixelSize(std::max(8, int(std::lround(pixels))));
    font.setBold(bold);
    return font;
}

// A chart scales with its size; its text stays readable down to a window
// and on a printed page.
Frame MakeFrame(const QSize& size, bool rightAxis) {
    Frame f;
    f.unit = std::min(size.width() / double(kChartWidth), size.height() / double(kChartHeight));
    f.unit = std::max(f.unit, 0.45);
    const double left = 150 * f.unit, right = (rightAxis ? 150 : 50) * f.unit;
    const double top = 125 * f.unit, bottom = 115 * f.unit;
    f.area = QRectF(left, top, std::max(10.0, size.width() - left - right),
                    std::max(10.0, size.height() - top - bottom));
    return f;
}

void DrawTitle(QPainter& p, const QSize& size, const Frame& f, const QString& title) {
    p.setPen(Qt::black);
    p.setFont(ChartFont(30 * f.unit, true));
    p.drawText(QRectF(0, 12 * f.unit, size.width(), 50 * f.unit), Qt::AlignCenter, title);
}

void DrawMessage(QPainter& p, const Frame& f, const QString& text) {
    p.setPen(Qt::darkGray);
    p.setFont(ChartFont(26 * f.unit));
    p.drawText(f.area, Qt::AlignCenter | Qt::TextWordWrap, text);
}

// Grid, box, ticks and their labels, and the axis titles.
void DrawAxes(QPainter& p, const Frame& f, const std::vector<double>& xTicks,
              const std::vector<double>& yTicks, const QString& xTitle, const QString& yTitle,
              bool xLabels = true) {
    const double u = f.unit;
    p.setFont(ChartFont(21 * u));
    const QFontMetricsF metrics(p.font());
    for (double t : xTicks) {
        const double x = f.X(t);
        p.setPen(QPen(kGridColour, std::max(1.0, u)));
        p.drawLine(QPointF(x, f.area.top()), QPointF(x, f.area.bottom()));
        if (!xLabels) continue;
        p.setPen(Qt::black);
        p.drawText(QRectF(x - 100 * u, f.area.bottom() + 8 * u, 200 * u, metrics.height()), Qt::AlignHCenter,
                   TickText(t));
    }
    for (double t : yTicks) {
        const double y = f.Y(t);
        p.setPen(QPen(kGridColour, std::max(1.0, u)));
        p.drawLine(QPointF(f.area.left(), y), QPointF(f.area.right(), y));
        p.setPen(Qt::black);
        p.drawText(QRectF(0, y - metrics.height() / 2, f.area.left() - 10 * u, metrics.height()),
                   Qt::AlignRight | Qt::AlignVCenter, TickText(t));
    }
    p.setPen(QPen(Qt::black, std::max(1.0, 1.5 * u)));
    p.setBrush(Qt::NoBrush);
    p.drawRect(f.area);

    p.setFont(ChartFont(24 * u));
    p.drawText(QRectF(f.area.left(), f.area.bottom() + 50 * u, f.area.width(), 50 * u), Qt::AlignCenter,
               xTitle);
    p.save();
    p.translate(20 * u, f.area.center().y());
    p.rotate(-90);
    // A smaller font where the axis is too short for the title.
    for (int pixels = p.font().pixelSize();
         pixels > 8 && QFontMetricsF(p.font()).horizontalAdvance(yTitle) > f.area.height();)
        p.setFont(ChartFont(--pixels));
    p.drawText(QRectF(-f.area.height() / 2, 0, f.area.height(), 40 * u), Qt::AlignCenter, yTitle);
    p.restore();
}

// The legend in the upper corner: a sample of each entry and its text.
struct LegendEntry {
    enum Kind { Line, Dashed, Marker, Bar } kind;
    QColor colour;
    QString text;
};

// The legend, in one row between the title and the plot, where it covers
// nothing: a sample of each entry and its text.
void DrawLegend(QPainter& p, const Frame& f, const std::vector<LegendEntry>& entries) {
    const double u = f.unit;
    p.setFont(ChartFont(20 * u));
    const QFontMetricsF metrics(p.font());
    const double sample = 45 * u, gap = 35 * u;
    double width = 0;
    for (const LegendEntry& e : entries) width += sample + metrics.horizontalAdvance(e.text) + gap;
    width -= gap;
    double x = f.area.center().x() - width / 2;
    const double y = f.area.top() - 22 * u;
    for (const LegendEntry& e : entries) {
        switch (e.kind) {
            case LegendEntry::Line:
            case LegendEntry::Dashed:
                p.setPen(QPen(e.colour, 3 * u, e.kind == LegendEntry::Dashed ? Qt::DashLine : Qt::SolidLine));
                p.drawLine(QPointF(x, y), QPointF(x + sample - 10 * u, y));
                break;
            case LegendEntry::Marker:
                p.setPen(QPen(Qt::white, u));
                p.setBrush(e.colour);
                p.drawEllipse(QPointF(x + sample / 2 - 5 * u, y), 7 * u, 7 * u);
                break;
            case LegendEntry::Bar:
                p.setPen(Qt::NoPen);
                p.setBrush(e.colour);
                p.drawRect(QRectF(x + 6 * u, y - 9 * u, sample - 22 * u, 18 * u));
                break;
        }
        p.setPen(Qt::black);
        p.drawText(QPointF(x + sample, y + metrics.ascent() / 2 - 2 * u), e.text);
        x += sample + metrics.horizontalAdvance(e.text) + gap;
    }
}

void Begin(QPainter& p, const QSize& size) {
    p.setRenderHint(QPainter::Antialiasing);
    p.setRenderHint(QPainter::TextAntialiasing);
    p.fillRect(QRect(QPoint(0, 0), size), Qt::white);
}

QByteArray Png(const std::function<void(QPainter&, const QSize&)>& paint) {
    const QSize size(kChartWidth, kChartHeight);
    QImage image(size, QImage::Format_RGB32);
    {
        QPainter painter(&image);
        paint(painter, size);
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

std::string KindWord(i16 spectrumType) {
    if (spectrumType == 1) return "velocity";
    if (spectrumType == 2) return "acceleration";
    return "displacement";
}

}  // namespace

void PaintSpectrumChart(QPainter& p, const QSize& size, const RunFigures& fig) {
    Begin(p, size);
    Frame f = MakeFrame(size, false);
    const bool log = fig.InterpMethod == 1;
    DrawTitle(p, size, f,
              "Response spectrum, options set " + Q(fig.OptionsNumber) + ": " +
                  Q(CurveKind(fig.SpectrumType)) + " \u00D7 " + Q(GeneralText(fig.CurveFactor)) + ", " +
                  (log ? "log-log" : "linear") + " interpolation");

    // The curve as the run uses it: the file's values times the factor.
    std::vector<QPointF> curve, modes;
    std::vector<double> curvePeriod, curveValue, modePeriod;
    for (std::size_t i = 0; i < fig.CurvePeriod.size(); ++i) {
        curve.emplace_back(fig.CurvePeriod[i], double(fig.CurveFactor) * fig.CurveValue[i]);
        curvePeriod.push_back(curve.back().x());
        curveValue.push_back(curve.back().y());
    }
    for (const ModeFigures& m : fig.Modes) {
        modes.emplace_back(m.Point.Period, CurveKindValue(m.Point, fig.SpectrumType));
        modePeriod.push_back(m.Point.Period);
    }
    const PeriodSpan span = SpectrumPeriodSpan(curvePeriod, curveValue, modePeriod, log);
    // A log axis leaves off what has no logarithm: a period-0 point, above all.
    const auto shown = [&](const QPointF& q) {
        return std::isfinite(q.x()) && std::isfinite(q.y()) && (!log || (q.x() > 0 && q.y() > 0));
    };
    double ylo = HUGE_VAL, yhi = -HUGE_VAL;
    bool any = false, leftOff = false;
    for (const auto* set : {&curve, &modes}) {
        for (const QPointF& q : *set) {
            leftOff = leftOff || (log && std::isfinite(q.x()) && !(q.x() > 0));
            if (!shown(q) || q.x() > span.Hi * (1 + 1e-9)) continue;
            any = true;
            ylo = std::min(ylo, q.y());
            yhi = std::max(yhi, q.y());
        }
    }
    const QString xTitle = "Period (s)";
    const QString yTitle = "Spectral " + Q(KindWord(fig.SpectrumType)) + " (" + Printed(CurveUnit(fig)) + ")";
    if (!any) {
        f.x = LinearScale(0, 1);
        f.y = LinearScale(0, 1);
        DrawAxes(p, f, LinearTicks(f.x), LinearTicks(f.y), xTitle, yTitle);
        DrawMessage(p, f, "No curve and no modes to show");
        return;
    }
    if (log) {
        f.x = {span.Lo, span.Hi, true};
        f.y = LogScale(ylo, yhi);
    } else {
        f.x = {0, span.Hi, false};
        f.y = LinearScale(std::min(0.0, ylo), yhi * 1.12);
    }
    DrawAxes(p, f, log ? LogTicks(f.x) : LinearTicks(f.x), log ? LogTicks(f.y) : LinearTicks(f.y), xTitle,
             yTitle);

    // What the axis leaves out, in a line under its right end.
    const double u = f.unit;
    QStringList notes;
    if (span.CurveEnd > 0) notes << "curve continues to " + TickText(span.CurveEnd) + " s \u2192";
    if (leftOff) notes << "period-0 points off the log axis";
    if (!notes.isEmpty()) {
        p.setPen(Qt::darkGray);
        p.setFont(ChartFont(19 * u));
        p.drawText(QRectF(f.area.left(), f.area.bottom() + 55 * u, f.area.width(), 40 * u),
                   Qt::AlignRight | Qt::AlignVCenter, notes.join("; "));
    }

    p.save();
    p.setClipRect(f.area.adjusted(-10 * u, -10 * u, 10 * u, 10 * u));
    QPainterPath path;
    bool started = false;
    for (const QPointF& q : curve) {
        if (!shown(q)) continue;
        const QPointF at(f.X(q.x()), f.Y(q.y()));
        if (started) {
            path.lineTo(at);
        } else {
            path.moveTo(at);
            started = true;
        }
    }
    p.setPen(QPen(kCurveColour, 3.5 * u));
    p.setBrush(Qt::NoBrush);
    p.drawPath(path);
    p.setBrush(kCurveColour);
    p.setPen(Qt::NoPen);
    for (const QPointF& q : curve) {
        if (shown(q)) p.drawEllipse(QPointF(f.X(q.x()), f.Y(q.y())), 4.5 * u, 4.5 * u);
    }

    // Each mode where the run took its value, the larger the more of a
    // direction's mass it moves.
    std::vector<double> share(modes.size(), 0);
    for (const DirectionFigures& d : fig.Directions) {
        for (std::size_t i = 0; i < std::min(share.size(), d.Rows.size()); ++i) {
            if (d.ExcitedMass > 0) share[i] = std::max(share[i], double(d.Rows[i].Effective / d.ExcitedMass));
        }
    }
    std::vector<double> xs(modes.size()), ys(modes.size());
    double lastDrop = -HUGE_VAL;
    for (std::size_t i = 0; i < modes.size(); ++i) {
        const QPointF& q = modes[i];
        xs[i] = shown(q) ? f.X(q.x()) : -HUGE_VAL;
        ys[i] = shown(q) ? f.Y(q.y()) : HUGE_VAL;
        if (!shown(q)) continue;
        const QPointF at(xs[i], ys[i]);
        // A drop line to the axis where it stands apart from the last one.
        if (std::fabs(at.x() - lastDrop) >= 6 * u) {
            p.setPen(QPen(QColor(200, 40, 40, 110), std::max(1.0, 1.2 * u), Qt::DotLine));
            p.drawLine(at, QPointF(at.x(), f.area.bottom()));
            lastDrop = at.x();
        }
        p.setPen(QPen(Qt::white, 1.2 * u));
        p.setBrush(kModeColour);
        const double r = (5 + 9 * std::sqrt(std::clamp(share[i], 0.0, 1.0))) * u;
        p.drawEllipse(at, r, r);
    }

    // Their numbers, a crowd of modes under one label of its first and last.
    p.setFont(ChartFont(19 * u, true));
    const QFontMetricsF metrics(p.font());
    std::vector<double> at;
    for (std::size_t i = 0; i < modes.size(); ++i) at.push_back(shown(modes[i]) ? xs[i] : f.area.left());
    const auto width = [&](const std::string& text) { return metrics.horizontalAdvance(Q(text)) + 4 * u; };
    p.setPen(kModeColour);
    for (const ModeLabel& label : ModeLabels(at, 4 * u, width)) {
        double top = HUGE_VAL;
        for (int m = label.First; m <= label.Last; ++m) top = std::min(top, ys[std::size_t(m - 1)]);
        if (!std::isfinite(top)) continue;
        QRectF box(label.X - label.Width / 2, top - 16 * u - metrics.height(), label.Width, metrics.height());
        if (box.top() < f.area.top()) box.moveTop(top + 16 * u);
        p.drawText(box, Qt::AlignCenter, Q(label.Text()));
    }
    p.restore();

    DrawLegend(p, f,
               {{LegendEntry::Line, kCurveColour, "Curve \u00D7 factor " + Q(GeneralText(fig.CurveFactor))},
                {LegendEntry::Marker, kModeColour, "Modes at their periods, numbered, sized by mass share"}});
}

void PaintParticipationChart(QPainter& p, const QSize& size, const RunFigures& fig, std::size_t direction) {
    Begin(p, size);
    Frame f = MakeFrame(size, true);
    const double u = f.unit;
    if (direction >= fig.Directions.size()) {
        DrawTitle(p, size, f, "Participation");
        f.x = LinearScale(0, 1);
        f.y = LinearScale(0, 1);
        DrawAxes(p, f, {}, {}, "Mode", "Effective mass");
        DrawMessage(p, f,
                    fig.StoppedAtGuard() ? "The run stopped before the directions" : "No direction was on");
        return;
    }
    const DirectionFigures& d = fig.Directions[direction];
    const bool rotation = d.Direction > 3;
    const QString massUnit = Printed(MassUnit(fig, rotation));
    const i32 reach = d.ModesTo90();
    QString title =
        "Participation, direction " + QString::number(d.Direction) + " " + Q(DirectionCaption(d.Direction));
    if (d.HasPercent)
        title += reach > 0 ? ": 90 % with " + QString::number(reach) + " modes" : ": 90 % not reached";
    DrawTitle(p, size, f, title);

    const std::size_t count = d.Rows.size();
    double top = 0;
    for (const ParticipationRow& r : d.Rows) top = std::max(top, double(r.Effective));
    // 100 % of the right axis stands level with the total mass on the left.
    const ShareScales scales = ParticipationScales(d.ExcitedMass, top);
    f.x = {0.5, count + 0.5, false};
    f.y = {0, scales.MassTop, false};
    f.y2 = {0, scales.PercentTop, false};

    // Mode numbers on the axis, every k-th where they are many.
    std::vector<double> xTicks;
    const double room = f.area.width() / std::max<std::size_t>(count, 1);
    const int every = room >= 45 * u ? 1 : int(NiceStep(count * 45 * u / f.area.width(), 1));
    for (std::size_t m = 1; m <= count; ++m) {
        if (m == 1 || m % std::size_t(std::max(every, 1)) == 0) xTicks.push_back(double(m));
    }
    DrawAxes(p, f, {}, LinearTicks(f.y), "Mode",
             (rotation ? "Effective inertia (" : "Effective mass (") + massUnit + ")");
    p.setFont(ChartFont(21 * u));
    const QFontMetricsF metrics(p.font());
    p.setPen(Qt::black);
    for (double t : xTicks) {
        p.drawText(QRectF(f.X(t) - 60 * u, f.area.bottom() + 8 * u, 120 * u, metrics.height()),
                   Qt::AlignHCenter, QString::number(int(t)));
    }

    // The bars of the modes.
    p.setPen(Qt::NoPen);
    p.setBrush(kBarColour);
    const double barWidth = std::max(1.0, 0.7 * f.area.width() / std::max<std::size_t>(count, 1));
    for (std::size_t i = 0; i < count; ++i) {
        const double x = f.X(double(i + 1));
        const double y = f.Y(std::max(0.0, double(d.Rows[i].Effective)));
        p.drawRect(QRectF(x - barWidth / 2, y, barWidth, f.area.bottom() - y));
    }

    std::vector<LegendEntry> legend{{LegendEntry::Bar, kBarColour, "Effective mass of the mode"}};
    if (d.HasPercent) {
        // The right-hand axis: the cumulative share in per cent.
        const int percentStep = scales.PercentTop > 250 ? 50 : 20;
        for (int t = 0; t <= scales.PercentTop; t += percentStep) {
            const double y = f.Y2(t);
            p.setPen(Qt::black);
            p.drawLine(QPointF(f.area.right(), y), QPointF(f.area.right() + 6 * u, y));
            p.drawText(QRectF(f.area.right() + 10 * u, y - metrics.height() / 2, 80 * u, metrics.height()),
                       Qt::AlignLeft | Qt::AlignVCenter, QString::number(t));
        }
        p.save();
        p.setFont(ChartFont(24 * u));
        p.translate(f.area.right() + 95 * u, f.area.center().y());
        p.rotate(90);
        // The long title where the axis is tall enough for it.
        const QString longTitle = "Cumulative share of the mass (%)";
        const bool fits = QFontMetricsF(p.font()).horizontalAdvance(longTitle) <= f.area.height();
        p.drawText(QRectF(-f.area.height() / 2, 0, f.area.height(), 40 * u), Qt::AlignCenter,
                   fits ? longTitle : "Cumulative (%)");
        p.restore();

        p.setPen(QPen(kModeColour, 2.5 * u, Qt::DashLine));
        p.drawLine(QPointF(f.area.left(), f.Y2(90)), QPointF(f.area.right(), f.Y2(90)));
        p.setFont(ChartFont(20 * u, true));
        p.drawText(QRectF(f.area.left() + 10 * u, f.Y2(90) - 32 * u, 100 * u, 30 * u),
                   Qt::AlignLeft | Qt::AlignBottom, "90 %");

        QPolygonF line;
        for (std::size_t i = 0; i < count; ++i) line << QPointF(f.X(double(i + 1)), f.Y2(d.Rows[i].Percent));
        p.setPen(QPen(kCumulativeColour, 3.5 * u));
        p.setBrush(Qt::NoBrush);
        p.drawPolyline(line);
        p.setPen(Qt::NoPen);
        p.setBrush(kCumulativeColour);
        if (f.area.width() >= 12 * u * double(count)) {
            for (const QPointF& q : line) p.drawEllipse(q, 5.5 * u, 5.5 * u);
        }
        legend.push_back({LegendEntry::Line, kCumulativeColour, "Cumulative share (right axis)"});
        legend.push_back({LegendEntry::Dashed, kModeColour, "90 % of the mass"});
    }
    DrawLegend(p, f, legend);
}

void PaintStoreyShearChart(QPainter& p, const QSize& size, const RunFigures& fig, std::size_t direction) {
    Begin(p, size);
    Frame f = MakeFrame(size, false);
    const double u = f.unit;
    const DirectionFigures* d = direction < fig.Directions.size() ? &fig.Directions[direction] : nullptr;
    DrawTitle(p, size, f,
              d ? "Storey shear, direction " + QString::number(d->Direction) + " " +
                      Q(DirectionCaption(d->Direction))
                : QString("Storey shear"));
    const QString xTitle = "Storey shear (" + Q(ForceUnit(fig)) + ")";
    const QString yTitle = "Height (" + Q(LengthUnit(fig)) + ")";
    double shearTop = 0;
    if (d) {
        for (const std::vector<f32>& shear : d->StoreyShear) {
            for (f32 v : shear) shearTop = std::max(shearTop, double(v));
        }
    }
    if (!HasStoreyShears(d ? *d : DirectionFigures{})) {
        f.x = LinearScale(0, 1);
        f.y = LinearScale(0, 1);
        DrawAxes(p, f, {}, {}, xTitle, yTitle);
        DrawMessage(p, f,
                    d ? "Storey shears are worked out for the translations only" : "No direction was on");
        return;
    }
    // Heights come highest first.
    const std::vector<f32>& h = d->StoreyHeights;
    const double low = h.back(), high = h.front();
    f.x = LinearScale(0, shearTop > 0 ? shearTop * 1.05 : 1);
    f.y = LinearScale(std::min(0.0, low), high > low ? high + 0.03 * (high - low) : high + 1);
    DrawAxes(p, f, LinearTicks(f.x), LinearTicks(f.y), xTitle, yTitle);

    // A method's shear holds through the storey below each level: steps
    // from the top down, a marker at each level.
    static const QColor colours[kCombMethods] = {
        {31, 95, 170}, {200, 40, 40}, {40, 150, 70}, {230, 120, 20}, {130, 70, 170}};
    std::vector<LegendEntry> legend;
    p.save();
    p.setClipRect(f.area.adjusted(-10 * u, -10 * u, 10 * u, 10 * u));
    // The options' method last, over the others.
    for (int n = 1; n <= kCombMethods; ++n) {
        const int k = (fig.CombMethod + n) % kCombMethods;
        const std::vector<f32>& shear = d->StoreyShear[std::size_t(k)];
        if (shear.size() != h.size()) continue;
        const bool chosen = k == fig.CombMethod;
        QPolygonF steps;
        for (std::size_t l = 0; l < h.size(); ++l) {
            steps << QPointF(f.X(shear[l]), f.Y(h[l]));
            // The lowest level's shear, the base shear, holds down to the ground.
            steps << QPointF(f.X(shear[l]), f.Y(l + 1 < h.size() ? double(h[l + 1]) : f.y.lo));
        }
        p.setPen(QPen(colours[k], (chosen ? 4.5 : 2.5) * u, chosen ? Qt::SolidLine : Qt::DashLine));
        p.setBrush(Qt::NoBrush);
        p.drawPolyline(steps);
        p.setPen(Qt::NoPen);
        p.setBrush(colours[k]);
        if (chosen && f.area.height() >= 12 * u * double(h.size())) {
            for (std::size_t l = 0; l < h.size(); ++l)
                p.drawEllipse(QPointF(f.X(shear[l]), f.Y(h[l])), 5.5 * u, 5.5 * u);
        }
    }
    p.restore();
    for (int k = 0; k < kCombMethods; ++k) {
        const bool chosen = k == fig.CombMethod;
        if (d->StoreyShear[std::size_t(k)].size() == h.size())
            legend.push_back({chosen ? LegendEntry::Line : LegendEntry::Dashed, colours[k],
                              Q(MethodCaption(k)) + (chosen ? " (options)" : "")});
    }
    DrawLegend(p, f, legend);
}

QByteArray SpectrumChartPng(const RunFigures& figures) {
    return Png([&](QPainter& p, const QSize& size) { PaintSpectrumChart(p, size, figures); });
}

QByteArray ParticipationChartPng(const RunFigures& figures, std::size_t direction) {
    return Png([&](QPainter& p, const QSize& size) { PaintParticipationChart(p, size, figures, direction); });
}

bool HasStoreyShears(const DirectionFigures& d) {
    if (d.StoreyHeights.empty()) return false;
    return std::any_of(d.StoreyShear.begin(), d.StoreyShear.end(),
                       [&](const std::vector<f32>& shear) { return shear.size() == d.StoreyHeights.size(); });
}

std::vector<std::pair<std::string, std::string>> ChartFiles(const RunFigures& figures) {
    std::vector<std::pair<std::string, std::string>> files;
    const QByteArray spectrum = SpectrumChartPng(figures);
    files.emplace_back("spectrum.png", spectrum.toStdString());
    for (std::size_t i = 0; i < figures.Directions.size(); ++i) {
        const QByteArray png = ParticipationChartPng(figures, i);
        files.emplace_back("participation-" + GeneralText(figures.Directions[i].Direction) + ".png",
                           png.toStdString());
    }
    for (std::size_t i = 0; i < figures.Directions.size(); ++i) {
        const DirectionFigures& d = figures.Directions[i];
        if (!HasStoreyShears(d)) continue;
        const QByteArray png =
            Png([&](QPainter& p, const QSize& size) { PaintStoreyShearChart(p, size, figures, i); });
        files.emplace_back("storey-shear-" + GeneralText(d.Direction) + ".png", png.toStdString());
    }
    return files;
}

}  // namespace tremodal
