// The Linux side and the windows on an offscreen screen: the user settings
// store, every control of the dialog under its name, typing through the key
// filters, and Execute on the example model with a stand-in casepost, the
// report viewer and the charts of the run in their window and their PNG files.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>
#include <filesystem>

#include "platform/linux_host.h"
#include "run/startup.h"
#include "support/model_fixture.h"
#include "view/form2_view.h"
#include "view/plots_window.h"

namespace tremodal {
namespace {

using testing::ReadFile;
using testing::TempDir;

// A settings file that is a FIFO would hold the read at its open until
// somebody writes to it; a directory or a FIFO in its place is no settings
// file, and the store reads as empty.
TEST(LinuxHost, SettingsThatAreNoFileReadAsEmpty) {
    TempDir dir;
    ::setenv("XDG_CONFIG_HOME", dir.Path().c_str(), 1);
    std::filesystem::create_directories(dir.File("VARNEK"));
    const std::string settings = dir.File("VARNEK/VARNEK.conf");
    LinuxHost host;
    ::alarm(10);  // a read that waits ends the test here
    ASSERT_EQ(::mkfifo(settings.c_str(), 0644), 0);
    EXPECT_EQ(host.ReadSetting("VARNEK", "Setup", "Files1"), "");
    std::filesystem::remove(settings);
    ASSERT_EQ(::mkfifo(dir.File("VARNEK.conf").c_str(), 0644), 0);
    EXPECT_EQ(host.ReadSetting("VARNEK", "Setup", "Files1"), "");
    ::alarm(0);
    ::unsetenv("XDG_CONFIG_HOME");
}

// How long a test waits for what the event loop brings (a window made active,
// a deferred selection, a child ending): a bound for a machine under load.
constexpr int kPatienceMs = 60000;

// The prompts answered and the messages caught, but the children real.
struct RealChildrenHost : testing::FakeHost {
    LinuxHost children;
    void StartChild(const std::string& program) override { children.StartChild(program); }
    ChildState PollChild() override { return children.PollChild(); }
};

// The dialog on the example model, its window active. casepost is a
// stand-in that tells where it ran.
struct ExampleDialog : testing::ExampleModel {
    RealChildrenHost host;
    RunState state;
    std::unique_ptr<Form2View> view;

    ExampleDialog() {
        host.Files1 = dir.Path();
        host.Files2 = dir.File("bin");
        state.Ui = &host;
        if (Main(state, "") != StartOutcome::Dialog) throw std::runtime_error("start-up failed");
        view = std::make_unique<Form2View>(state);
        view->show();
        // The screen makes the window active a moment after it is shown; until
        // then the focus moves without focus events, and keys and clicks reach
        // a form the user could not be typing into.
        view->activateWindow();
        if (!QTest::qWaitForWindowActive(view.get(), kPatienceMs))
            throw std::runtime_error("the dialog's window did not become active");
    }
    ~ExampleDialog() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    template <class W = QWidget>
    W* Control(const char* name) const {
        W* widget = view->findChild<W*>(name);
        if (!widget) throw std::runtime_error(std::string("no control ") + name);
        return widget;
    }
    void Click(const char* name) { QTest::mouseClick(Control(name), Qt::LeftButton); }
};

// The group box a control stands in, "Form2" for none.
std::string FrameOf(QWidget* control) {
    QWidget* w = control->parentWidget();
    while (!qobject_cast<QGroupBox*>(w) && w->parentWidget()) w = w->parentWidget();
    return w->objectName().toStdString();
}

TEST(Form2View, EveryControlStandsUnderItsNameInItsFrameAndTypesThroughItsFilter) {
    ExampleDialog d;
    const std::pair<const char*, const char*> frames[] = {
        {"Form2",
         "Label1 Label5 Command5_0 Command5_1 Command3_1 Command3_0 Label2 txtCase_0 Label3 txtDir Frame1 "
         "Frame2 Frame4 Frame5 Label10_2 txtCase_3 Label10_1 txtCase_4 Label10_0 txtCase_1 chkAccel chkShear "
         "Command1_0 Command1_2 Command1_1 Command1_3 Command2 Command4 Copy Plots List1"},
        {"Frame1",
         "chkDir_0 chkDir_2 chkDir_1 chkDir_5 chkDir_3 chkDir_4 Label4 txtFact_0 txtFact_1 Label7 txtFact_2 "
         "Label9 Label8 txtGround_0 txtGround_1 txtGround_2"},
        {"Frame2", "optSpect_0 optSpect_1 optSpect_2 Label6 txtCurve Frame3"},
        {"Frame3", "optInterp_0 optInterp_1"},
        {"Frame4", "optComb_0 optComb_1 optComb_2 optComb_3 txtTDur optComb_4 Label11_1 txtDampR Command6"},
        {"Frame5", "chkMissMass txtCase_2 chkZPA"},
    };
    for (const auto& [frame, names] : frames) {
        for (const QString& name : QString(names).split(' '))
            EXPECT_EQ(FrameOf(d.Control(name.toUtf8().constData())), frame) << name.toStdString();
    }
    EXPECT_EQ(d.Control<QTimer>("Timer1")->interval(), 100);

    // Captions with the system's own blanks and spellings.
    const std::pair<const char*, std::string> captions[] = {
        {"Frame1", "Spectum Direction Definition"},   {"Label8", "X                     Y               Z"},
        {"optComb_3", "DSM           Duration Secs"}, {"Command4", "Close/Open Output  Viewer"},
        {"Label1", "Model :" + d.modelPath},          {"txtFact_0", "0.7"},
    };
    for (const auto& [name, caption] : captions) {
        QWidget* w = d.Control(name);
        EXPECT_EQ(w->property(qobject_cast<QGroupBox*>(w) ? "title" : "text").toString().toStdString(),
                  caption);
    }
    EXPECT_EQ(d.view->windowTitle(), "Seismic Analysis - Modal Response Spectrum Analysis     Rel 3-2-7");
    EXPECT_TRUE(d.Control<QRadioButton>("optComb_1")->isChecked());
    EXPECT_TRUE(QFontInfo(d.Control("List1")->font()).fixedPitch());

    // The tab order starts with the frequency case, Execute, the angle.
    for (const char* name : {"txtCase_0", "Command1_0", "txtDir"}) {
        EXPECT_EQ(QApplication::focusWidget(), d.Control(name));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }

    // The selection follows the focus once the event loop has run.
    auto* selected = d.Control<QLineEdit>("txtCase_3");
    d.Control("txtCase_4")->setFocus();
    selected->setFocus();
    ASSERT_TRUE(selected->hasFocus());
    EXPECT_TRUE(QTest::qWaitFor([&] { return selected->hasSelectedText(); }, kPatienceMs));
    EXPECT_EQ(selected->selectedText(), "0");

    // Each field types through its key filter, or through none.
    const std::pair<const char*, const char*> fields[] = {
        {"txtFact_0 txtFact_1 txtFact_2 txtGround_0 txtGround_1 txtGround_2 txtCurve", "1.5E-3E"},
        {"txtCase_0 txtCase_1 txtCase_2 txtCase_3 txtCase_4 txtDir", "1.5-3E"},
        {"txtTDur txtDampR", "1.5e-3xE"},
    };
    for (const auto& [names, typed] : fields) {
        for (const QString& name : QString(names).split(' ')) {
            auto* field = d.Control<QLineEdit>(name.toUtf8().constData());
            field->clear();
            QTest::keyClicks(field, "1.5e-3xE");
            EXPECT_EQ(field->text().toStdString(), typed) << name.toStdString();
        }
    }
}

// The pixels of the image within a small distance of the colour.
int PixelsOf(const QImage& image, QColor colour) {
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor c = image.pixelColor(x, y);
            count += std::abs(c.red() - colour.red()) + std::abs(c.green() - colour.green()) +
                         std::abs(c.blue() - colour.blue()) <
                     30;
        }
    }
    return count;
}

const QColor kCurve(31, 95, 170), kModes(200, 40, 40), kBars(90, 140, 200), kCumulative(230, 120, 20);

TEST(Form2View, ExecuteShowsTheReportFollowsCasepostAndDrawsTheCharts) {
    ExampleDialog d;
    auto* list = d.Control<QListWidget>("List1");
    // Options 1 of the example, then Execute under the same number, on a
    // linear and on a logarithmic interpolation.
    d.host.PromptAnswers = {"1"};
    d.Click("Command5_0");
    EXPECT_EQ(d.Control<QLineEdit>("txtCase_1")->text(), "20");
    EXPECT_EQ(d.Control("Label5")->property("text").toString().toStdString(),
              "Respons File:" + d.File(".URS1"));
    for (const char* interpolation : {"0", "1"}) {
        SCOPED_TRACE(interpolation);
        d.Click((std::string("optInterp_") + interpolation).c_str());
        d.host.PromptAnswers = {"1"};
        d.Click("Command1_0");
        EXPECT_NE(ReadFile(d.File(".USM1")).find(std::string("1-Log  , ") + interpolation + "\r\n"),
                  std::string::npos);
        // The viewer over the controls with the report, Copy and Plots below.
        EXPECT_TRUE(list->isVisible() && d.Control("Copy")->isVisible() && d.Control("Plots")->isVisible());
        EXPECT_LT(list->geometry().bottom(), d.Control("Command4")->geometry().top());
        std::vector<std::string> shown;
        for (int i = 0; i < list->count(); ++i) shown.push_back(list->item(i)->text().toStdString());
        EXPECT_EQ(shown, d.state.List1);  // the second run's report differs only in its middle

        auto* timer = d.Control<QTimer>("Timer1");
        EXPECT_TRUE(timer->isActive());
        EXPECT_TRUE(QTest::qWaitFor([&] { return !timer->isActive(); }, kPatienceMs))
            << "casepost still running";
        EXPECT_TRUE(d.view->isVisible());

        // The charts' window: the chart on the screen follows the chosen
        // direction; the saved files are the charts of the run.
        d.Click("Plots");
        auto* window = d.Control<PlotsWindow>("PlotsWindow");
        ASSERT_TRUE(QTest::qWaitForWindowActive(window, kPatienceMs));
        auto* direction = window->findChild<QComboBox*>("cboDirection");
        ASSERT_EQ(direction->count(), 2);
        EXPECT_EQ(direction->itemText(1), "3 Lateral (Minor wave)");
        auto* chart = window->findChild<QWidget*>("chartParticipation");
        const QImage first = chart->grab().toImage();
        direction->setCurrentIndex(1);
        const QImage second = chart->grab().toImage();
        EXPECT_GT(PixelsOf(second, kBars), 1000);
        EXPECT_NE(first, second) << "the chart follows the chosen direction";

        const std::string folder = d.dir.File(std::string("charts") + interpolation);
        window->ChooseFolder = [&] { return QString::fromStdString(folder); };
        QTest::mouseClick(window->findChild<QPushButton*>("cmdSavePng"), Qt::LeftButton);
        delete window;
        const QImage spectrum(QString::fromStdString(folder + "/spectrum.png"));
        EXPECT_GE(spectrum.width(), 1000);
        EXPECT_GT(PixelsOf(spectrum, kCurve), 3000);
        EXPECT_GT(PixelsOf(spectrum, kModes), 10 * 100);  // ten mode markers
        for (const char* name : {"/participation-1.png", "/participation-3.png"}) {
            const QImage participation(QString::fromStdString(folder + name));
            EXPECT_GT(PixelsOf(participation, kBars), 20000) << name;
            EXPECT_GT(PixelsOf(participation, kCumulative), 2000) << name;
        }
        EXPECT_EQ(d.host.Messages, std::vector<std::string>{});
    }
    const std::string ran = "casepost ran in " + d.dir.Path() + "\n";
    EXPECT_EQ(ReadFile(d.dir.File("casepost.out")), ran + ran);
    d.Click("Command4");
    EXPECT_FALSE(list->isVisible() || d.Control("Copy")->isVisible() || d.Control("Plots")->isVisible());
}

}  // namespace
}  // namespace tremodal
