// The charts of a run, drawn by one piece of code for the window and the
// PNG files: the response spectrum with the modes on it, the participation
// of a direction (effective mass by mode, the cumulative share, the 90 %
// line) and the storey shears of a translation under each method. Drawn with QPainter; they need a
// QGuiApplication for their fonts, on any platform, the offscreen one included.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <string>
#include <utility>
#include <vector>

#include "report/run_figures.h"

class QPainter;

namespace tremodal {

// The size of a chart in a file: wide enough to print across a page.
constexpr int kChartWidth = 1400;
constexpr int kChartHeight = 900;

// Paint onto a painter whose device is `size` large.
void PaintSpectrumChart(QPainter& painter, const QSize& size, const RunFigures& figures);
// `direction` indexes figures.Directions.
void PaintParticipationChart(QPainter& painter, const QSize& size, const RunFigures& figures,
                             std::size_t direction);
void PaintStoreyShearChart(QPainter& painter, const QSize& size, const RunFigures& figures,
                           std::size_t direction);
// Whether a direction has storey shears under some method.
bool HasStoreyShears(const DirectionFigures& direction);

// A chart as a PNG file's bytes.
QByteArray SpectrumChartPng(const RunFigures& figures);
QByteArray ParticipationChartPng(const RunFigures& figures, std::size_t direction);

// spectrum.png, participation-<d>.png for each direction on and
// storey-shear-<d>.png for each with storey shears, by file name.
std::vector<std::pair<std::string, std::string>> ChartFiles(const RunFigures& figures);

}  // namespace tremodal
