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
#include "view/report_charts.h"

namespace tremodal {
namespace {

TEST(ChartLayout, ModeLabelsNeverOverlapAndEveryModeIsInOne) {
    const auto width = [](const std::string& text) { return 9.0 * double(text.size()); };
    // 200 modes: 1 and 2 far apart, the others crowded into 40 pixels; and
    // ten modes 100 pixels apart, each labelled alone.
    std::vector<double> crowded{1000, 900}, spread;
    for (int m = 3; m <= 200; ++m) crowded.push_back(100 + 40.0 * (200 - m) / 198);
    for (int m = 1; m <= 10; ++m) spread.push_back(1000 - 100.0 * m);
    for (const auto& [x, singles] : {std::pair(crowded, 2), std::pair(spread, 10)}) {
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
        EXPECT_EQ(alone, singles);
    }
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
        EXPECT_LE(s.MassTop, 1.2 * std::max(total, tallest));
    }
}

// A run of two modes and one direction with storey shears under SRSS and CQC.
RunFigures SmallRun() {
    RunFigures f;
    f.OptionsNumber = "1";
    f.SpectrumType = 2;
    f.CurveFactor = 1;
    f.CurvePeriod = {0, 0.5, 2};
    f.CurveValue = {2, 5, 1};
    for (f32 t : {1.0f, 0.3f}) f.Modes.push_back({0, 0, 0.05f, ModalPoint{t, 0, 0, 4}});
    DirectionFigures d;
    d.Direction = 1;
    d.ExcitedMass = 2000;
    d.HasPercent = true;
    d.Rows = {{0, 0, 1, 1800, 1800, 90}, {0, 0, 0.3f, 150, 1950, 97.5f}};
    d.StoreyHeights = {6, 3};
    d.StoreyShear[0] = {3000, 7000};
    d.StoreyShear[1] = {3100, 7100};
    f.Directions.push_back(d);
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
            EXPECT_EQ(window.windowTitle(), "Plots");
            EXPECT_FALSE(save->isEnabled());
            EXPECT_TRUE(status->text().startsWith("Nothing to plot yet"));
            continue;
        }
        // At 800 x 600 the charts and the controls all show, side by side.
        window.resize(800, 600);
        QTest::qWait(20);
        EXPECT_EQ(window.size(), QSize(800, 600));
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
            EXPECT_TRUE(status->text().contains(name)) << status->text().toStdString();
            EXPECT_GT(std::filesystem::file_size(dir.File(name)), 1000u) << name;
        }
        EXPECT_TRUE(status->text().contains(QString::fromStdString(dir.Path())));
    }
}

}  // namespace
}  // namespace tremodal

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
