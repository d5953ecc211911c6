// The charts of a run, drawn offscreen: the PNG files that "--plots" and the
// dialog's Plots window write, and the window itself behind the dialog's
// Plots button.
#include "view/report_charts.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QTest>
#include <filesystem>

#include "input/options_file.h"
#include "report/report_run.h"
#include "run/startup.h"
#include "support/test_support.h"
#include "view/form2_view.h"
#include "view/plots_window.h"

namespace tremodal {
namespace {

using testing::FakeHost;
using testing::RunCommand;
using testing::TempDir;

struct ExampleModel {
    TempDir dir;
    FakeHost host;

    ExampleModel() {
        const std::string tool =
            std::string("'") + EXAMPLE_TOOL + "' '" + dir.Path() + "' --name-file > /dev/null";
        if (RunCommand(tool) != 0) throw std::runtime_error("example tool failed");
        host.Files1 = dir.Path();
        host.Files2 = dir.File("bin");
    }
    ~ExampleModel() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    // The figures of options set 1, with the interpolation given.
    RunFigures Figures(i16 interpolation) {
        RunState options;
        options.Model.ModelPath = dir.File("SHEAR");
        options.Options.OptionsFile = dir.File("SHEAR.USM1");
        ReadOptions(options);
        options.Options.InterpMethod = interpolation;
        options.Options.OptionsFile = dir.File("SHEAR.USM2");
        WriteOptionsFile(options);
        RunState state;
        RecordingHost recording(host);
        ReportRequest request;
        request.OptionsNumber = "2";
        return RunReport(state, recording, request);
    }
};

// The pixels of the image within a small distance of the colour.
int PixelsOf(const QImage& image, QColor colour) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            if (std::abs(c.red() - colour.red()) + std::abs(c.green() - colour.green()) +
                    std::abs(c.blue() - colour.blue()) <
                30)
                ++count;
        }
    }
    return count;
}

const QColor kCurve(31, 95, 170), kModes(200, 40, 40), kBars(90, 140, 200), kCumulative(230, 120, 20);

TEST(ReportCharts, ThePngFilesShowTheCurveTheModesTheBarsAndTheCumulativeShare) {
    ExampleModel model;
    for (i16 interpolation : {i16(0), i16(1)}) {
        SCOPED_TRACE("interpolation " + std::to_string(interpolation));
        const RunFigures figures = model.Figures(interpolation);
        const auto files = ChartFiles(figures);
        ASSERT_EQ(files.size(), 3u);
        EXPECT_EQ(files[0].first, "spectrum.png");
        EXPECT_EQ(files[1].first, "participation-1.png");
        EXPECT_EQ(files[2].first, "participation-3.png");
        std::vector<QImage> images;
        for (const auto& [name, png] : files) {
            images.push_back(QImage::fromData(QByteArray::fromStdString(png), "PNG"));
            ASSERT_FALSE(images.back().isNull()) << name;
            EXPECT_GE(images.back().width(), 1000) << name;
        }
        // A curve of some length, ten mode markers, bars and a line.
        EXPECT_GT(PixelsOf(images[0], kCurve), 3000);
        EXPECT_GT(PixelsOf(images[0], kModes), 10 * 100);
        for (int k : {1, 2}) {
            EXPECT_GT(PixelsOf(images[k], kBars), 20000);
            EXPECT_GT(PixelsOf(images[k], kCumulative), 2000);
        }
    }
}

TEST(PlotsWindow, ThePlotsButtonShowsTheLastRunsChartsAndSavesThem) {
    ExampleModel model;
    RunState state;
    state.Ui = &model.host;
    ASSERT_EQ(Main(state, ""), StartOutcome::Dialog);
    Form2View view(state);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    auto* plots = view.findChild<QPushButton*>("Plots");
    ASSERT_NE(plots, nullptr);
    EXPECT_FALSE(plots->isVisible());

    model.host.PromptAnswers = {"1", "1"};
    QTest::mouseClick(view.findChild<QPushButton*>("Command5_0"), Qt::LeftButton);
    QTest::mouseClick(view.findChild<QPushButton*>("Command1_0"), Qt::LeftButton);
    ASSERT_EQ(model.host.Messages, std::vector<std::string>{});
    EXPECT_TRUE(plots->isVisible()) << "shown with the viewer";
    EXPECT_EQ(plots->parentWidget(), view.findChild<QPushButton*>("Copy")->parentWidget());

    QTest::mouseClick(plots, Qt::LeftButton);
    auto* window = view.findChild<PlotsWindow*>("PlotsWindow");
    ASSERT_NE(window, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    auto* direction = window->findChild<QComboBox*>("cboDirection");
    ASSERT_NE(direction, nullptr);
    ASSERT_EQ(direction->count(), 2);
    EXPECT_EQ(direction->itemText(1), "3 Lateral (Minor wave)");
    // The chart on the screen is the chart of the file, at the window's size.
    auto* chart = window->findChild<QWidget*>("chartParticipation");
    const QImage first = chart->grab().toImage();
    direction->setCurrentIndex(1);
    QTest::qWait(20);
    const QImage second = chart->grab().toImage();
    EXPECT_GT(PixelsOf(second, kBars), 1000);
    EXPECT_NE(first, second) << "the chart follows the chosen direction";

    window->ChooseFolder = [&] { return QString::fromStdString(model.dir.File("charts")); };
    QTest::mouseClick(window->findChild<QPushButton*>("cmdSavePng"), Qt::LeftButton);
    for (const char* name : {"spectrum.png", "participation-1.png", "participation-3.png"}) {
        const QImage saved(QString::fromStdString(model.dir.File(std::string("charts/") + name)));
        EXPECT_GE(saved.width(), 1000) << name;
    }
    EXPECT_EQ(model.host.Messages, std::vector<std::string>{});

    // The button goes with the viewer.
    QTest::mouseClick(view.findChild<QPushButton*>("Command4"), Qt::LeftButton);
    EXPECT_FALSE(plots->isVisible());
}

}  // namespace
}  // namespace tremodal

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
