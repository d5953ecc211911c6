#include "view/report_charts.h"

#include <QBuffer>
#include <QFont>
#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>

#include "base/number_text.h"
#include "report/summary_text.h"

namespace tremodal {

namespace {

// Under logarithmic interpolation the run reads a period of 0 as this one.
constexpr double kLogZeroPeriod = 1e-5;

const QColor kCurveColour(31, 95, 170);
const QColor kModeColour(200, 40, 40);
const QColor kBarColour(90, 140, 200);
const QColor kCumulativeColour(230, 120, 20);
const QColor kGridColour(220, 220, 220);

QString Q(const std::string& text) { return QString::fromStdString(text); }

// Units as a printed page shows them.
QString Printed(const std::string& unit) { return Q(unit).replace("s2", "s\u00B2"); }

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

// The decades, and between them 2 and 5 where the decades are few.
std::vector<double> LogTicks(const Scale& s) {
    std::vector<double> ticks;
    const int first = int(std::lround(std::log10(s.lo))), last = int(std::lround(std::log10(s.hi)));
    const bool between = last - first <= 3;
    for (int k = first; k <= last; ++k) {
        const double decade = std::pow(10.0, k);
        ticks.push_back(decade);
        if (between && k < last) {
            ticks.push_back(2 * decade);
            ticks.push_back(5 * decade);
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
    for (std::size_t i = 0; i < fig.CurvePeriod.size(); ++i) {
        double t = fig.CurvePeriod[i];
        if (log && t == 0) t = kLogZeroPeriod;
        curve.emplace_back(t, double(fig.CurveFactor) * fig.CurveValue[i]);
    }
    for (const ModeFigures& m : fig.Modes)
        modes.emplace_back(m.Point.Period, CurveKindValue(m.Point, fig.SpectrumType));
    const auto shown = [&](const QPointF& q) {
        return std::isfinite(q.x()) && std::isfinite(q.y()) && (!log || (q.x() > 0 && q.y() > 0));
    };
    double xlo = HUGE_VAL, xhi = -HUGE_VAL, ylo = HUGE_VAL, yhi = -HUGE_VAL;
    for (const auto* set : {&curve, &modes}) {
        for (const QPointF& q : *set) {
            if (!shown(q)) continue;
            xlo = std::min(xlo, q.x());
            xhi = std::max(xhi, q.x());
            ylo = std::min(ylo, q.y());
            yhi = std::max(yhi, q.y());
        }
    }
    const QString xTitle = "Period (s)";
    const QString yTitle = "Spectral " + Q(KindWord(fig.SpectrumType)) + " (" + Printed(CurveUnit(fig)) + ")";
    if (xlo > xhi) {
        f.x = LinearScale(0, 1);
        f.y = LinearScale(0, 1);
        DrawAxes(p, f, LinearTicks(f.x), LinearTicks(f.y), xTitle, yTitle);
        DrawMessage(p, f, "No curve and no modes to show");
        return;
    }
    if (log) {
        f.x = LogScale(xlo, xhi);
        f.y = LogScale(ylo, yhi);
    } else {
        f.x = LinearScale(std::min(0.0, xlo), xhi * 1.02);
        f.y = LinearScale(std::min(0.0, ylo), yhi * 1.12);
    }
    DrawAxes(p, f, log ? LogTicks(f.x) : LinearTicks(f.x), log ? LogTicks(f.y) : LinearTicks(f.y), xTitle,
             yTitle);

    const double u = f.unit;
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

    // Each mode where the run took its value, labelled with its number where
    // the label finds room.
    p.setFont(ChartFont(19 * u, true));
    const QFontMetricsF metrics(p.font());
    std::vector<QRectF> labels;
    for (std::size_t i = 0; i < modes.size(); ++i) {
        const QPointF& q = modes[i];
        if (!shown(q)) continue;
        const QPointF at(f.X(q.x()), f.Y(q.y()));
        p.setPen(QPen(QColor(200, 40, 40, 110), std::max(1.0, 1.2 * u), Qt::DotLine));
        p.drawLine(at, QPointF(at.x(), f.area.bottom()));
        p.setPen(QPen(Qt::white, 1.5 * u));
        p.setBrush(kModeColour);
        p.drawEllipse(at, 7.5 * u, 7.5 * u);
        const QString text = QString::number(i + 1);
        QRectF box(at.x() - metrics.horizontalAdvance(text) / 2 - 2 * u, at.y() - 12 * u - metrics.height(),
                   metrics.horizontalAdvance(text) + 4 * u, metrics.height());
        if (box.top() < f.area.top()) box.moveTop(at.y() + 12 * u);
        const bool free =
            std::none_of(labels.begin(), labels.end(), [&](const QRectF& r) { return r.intersects(box); });
        if (!free) continue;
        labels.push_back(box);
        p.setPen(kModeColour);
        p.drawText(box, Qt::AlignCenter, text);
    }
    p.restore();

    DrawLegend(p, f,
               {{LegendEntry::Line, kCurveColour, "Curve \u00D7 factor " + Q(GeneralText(fig.CurveFactor))},
                {LegendEntry::Marker, kModeColour, "Modes at their periods, numbered"}});
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
    const bool inches = fig.UnitSystem == 1;
    const QString massUnit = rotation ? (inches ? "lbf\u00B7s\u00B2\u00B7in" : "kg\u00B7m\u00B2")
                                      : (inches ? "lbf\u00B7s\u00B2/in" : "kg");
    const i32 reach = d.ModesTo90();
    QString title =
        "Participation, direction " + QString::number(d.Direction) + " " + Q(DirectionCaption(d.Direction));
    if (d.HasPercent)
        title += reach > 0 ? ": 90 % with " + QString::number(reach) + " modes" : ": 90 % not reached";
    DrawTitle(p, size, f, title);

    const std::size_t count = d.Rows.size();
    double top = 0;
    for (const ParticipationRow& r : d.Rows) top = std::max(top, double(r.Effective));
    f.x = {0.5, count + 0.5, false};
    f.y = LinearScale(0, top > 0 ? top * 1.15 : 1);
    f.y2 = {0, 105, false};

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
        for (int t = 0; t <= 100; t += 20) {
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
        p.drawText(QRectF(-f.area.height() / 2, 0, f.area.height(), 40 * u), Qt::AlignCenter,
                   "Cumulative share of the mass (%)");
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
        if (count <= 200) {
            for (const QPointF& q : line) p.drawEllipse(q, 5.5 * u, 5.5 * u);
        }
        legend.push_back({LegendEntry::Line, kCumulativeColour, "Cumulative share (right axis)"});
        legend.push_back({LegendEntry::Dashed, kModeColour, "90 % of the mass"});
    }
    DrawLegend(p, f, legend);
}

QByteArray SpectrumChartPng(const RunFigures& figures) {
    return Png([&](QPainter& p, const QSize& size) { PaintSpectrumChart(p, size, figures); });
}

QByteArray ParticipationChartPng(const RunFigures& figures, std::size_t direction) {
    return Png([&](QPainter& p, const QSize& size) { PaintParticipationChart(p, size, figures, direction); });
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
    return files;
}

}  // namespace tremodal
