// Where the parts of the charts go, and the Plots window on a small screen.
#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <filesystem>

#include "report/chart_layout.h"
#include "support/test_support.h"
#include "view/plots_window.h"

namespace tremodal {
namespace {

TEST(ChartLayout, ModeLabelsNeverOverlapAndEveryModeIsInOne) {
    const auto width = [](const std::string& text) { return 9.0 * double(text.size()); };
    // 200 modes: 1 to 3 far apart, the others crowded into 40 pixels.
    std::vector<double> x{1000, 900, 800};
    for (int m = 4; m <= 200; ++m) x.push_back(100 + 40.0 * (200 - m) / 197);
    const std::vector<ModeLabel> labels = ModeLabels(x, 4, width);
    std::vector<int> covered(x.size() + 1, 0);
    int alone = 0;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const ModeLabel& l = labels[i];
        for (int m = l.First; m <= l.Last; ++m) ++covered[std::size_t(m)];
        alone += l.First == l.Last;
        const double left = i > 0 ? labels[i - 1].X + labels[i - 1].Width / 2 + 4 : -HUGE_VAL;
        EXPECT_LE(left, l.X - width(l.Text()) / 2) << l.Text();
    }
    EXPECT_EQ(std::count(covered.begin() + 1, covered.end(), 1), std::ptrdiff_t(x.size()));
    EXPECT_EQ(alone, 3);
    EXPECT_EQ((ModeLabel{4, 9}.Text()), "4\u20139");
}

TEST(ChartLayout, ThePeriodAxisCoversTheModesAndTheKneeAndTheLogAxisStartsAtTheFirstPositivePeriod) {
    // A plateau from 0.1 to 0.5 s and a curve to 10 s.
    const std::vector<double> period{0, 0.1, 0.5, 1, 10}, value{2, 5, 5, 3, 0.3}, modes{0.3, 0.15, 0.12};
    const struct {
        std::vector<double> modes;
        bool log;
        double lo, hi, curveEnd;
    } cases[] = {{modes, false, 0, 0.55, 10}, {modes, true, 0.1, 10, 0}, {{12}, false, 0, 12.24, 0}};
    for (const auto& c : cases) {
        const PeriodSpan span = SpectrumPeriodSpan(period, value, c.modes, c.log);
        EXPECT_NEAR(span.Lo, c.lo, 1e-9);
        EXPECT_NEAR(span.Hi, c.hi, 1e-9);
        EXPECT_NEAR(span.CurveEnd, c.curveEnd, 1e-9);
    }
}

TEST(ChartLayout, HundredPerCentStandsLevelWithTheTotalMass) {
    for (const auto& [total, tallest] : {std::pair(5000.0, 4400.0), std::pair(5000.0, 6000.0)}) {
        const ShareScales s = ParticipationScales(total, tallest);
        EXPECT_NEAR(s.MassTop * 100 / s.PercentTop, total, 1e-9);
        EXPECT_GE(s.MassTop, tallest);
    }
}

// A run of one mode and one direction with a storey shear under SRSS.
RunFigures SmallRun() {
    RunFigures f;
    f.Modes.push_back({0, 0, 0.05f, ModalPoint{1, 0, 0, 4}});
    f.Directions.resize(1);
    f.Directions[0].Direction = 1;
    f.Directions[0].StoreyHeights = {3};
    f.Directions[0].StoreyShear[0] = {3000};
    return f;
}

TEST(PlotsWindow, FitsASmallScreenSaysWhenThereIsNothingAndNamesTheFilesItSaves) {
    testing::FakeHost host;
    testing::TempDir dir;
    const RunFigures none, run = SmallRun();
    for (const RunFigures* figures : {&none, &run}) {
        PlotsWindow window(*figures, host);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        EXPECT_LE(window.width(), 1366);
        EXPECT_LE(window.frameGeometry().height(), 768);
        auto* save = window.findChild<QPushButton*>("cmdSavePng");
        auto* status = window.findChild<QLabel*>("lblStatus");
        if (figures == &none) {
            EXPECT_FALSE(save->isEnabled());
            EXPECT_TRUE(status->text().startsWith("Nothing to plot yet"));
            continue;
        }
        // At 800 x 600 the charts and the controls all show, side by side.
        window.resize(800, 600);
        EXPECT_TRUE(QTest::qWaitFor([&] { return window.size() == QSize(800, 600); }));
        std::vector<QRect> parts;
        for (const char* name :
             {"chartSpectrum", "tabDirectionCharts", "cboDirection", "lblStatus", "cmdSavePng", "cmdClose"}) {
            const QWidget* part = window.findChild<QWidget*>(name);
            parts.emplace_back(part->mapTo(&window, QPoint(0, 0)), part->size());
            EXPECT_TRUE(window.rect().contains(parts.back()) && parts.back().height() >= 20) << name;
            for (std::size_t k = 0; k + 1 < parts.size(); ++k)
                EXPECT_FALSE(parts.back().intersects(parts[k])) << name;
        }
        window.ChooseFolder = [&] { return QString::fromStdString(dir.Path()); };
        QTest::mouseClick(save, Qt::LeftButton);
        for (const char* name : {"spectrum.png", "participation-1.png", "storey-shear-1.png"}) {
            EXPECT_TRUE(status->text().contains(name) && status->text().contains(dir.Path().c_str()))
                << status->text().toStdString();
            EXPECT_GT(std::filesystem::file_size(dir.File(name)), 1000u) << name;
        }
    }
}

}  // namespace
}  // namespace tremodal
