// The dialog on an offscreen screen: every control under its name, typing
// through the key filters, the report viewer, and one Execute on the example
// model with a stand-in casepost.
#include "view/form2_view.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
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

namespace tremodal {
namespace {

using testing::ReadFile;
using testing::RunCommand;
using testing::TempDir;

// How long a test waits for something the event loop brings (a window made
// active, a deferred selection, a child process ending) before it gives up.
// The waits end as soon as the thing has happened; the bound is only there
// for a machine under load.
constexpr int kPatienceMs = 60000;

template <class Condition>
bool Eventually(Condition condition) {
    return QTest::qWaitFor(condition, kPatienceMs);
}

// The Linux host with its real child processes, but with the settings of
// the test's directory and the prompts answered in turn.
class AnsweringHost : public LinuxHost {
public:
    std::string Files1;
    std::vector<std::string> Answers;
    std::vector<std::string> Messages;

    std::string ReadSetting(const std::string&, const std::string&, const std::string& key) override {
        return key == "Files1" ? Files1 : key == "Files2" ? Files1 + "/bin" : "";
    }
    void ShowMessage(const std::string& text, const std::string&) override { Messages.push_back(text); }
    std::string Prompt(const std::string&, const std::string&, const std::string&) override {
        if (Answers.empty()) return "";
        std::string answer = Answers.front();
        Answers.erase(Answers.begin());
        return answer;
    }
};

struct ExampleDialog {
    TempDir dir;
    AnsweringHost host;
    RunState state;
    std::unique_ptr<Form2View> view;

    ExampleDialog() {
        const std::string tool =
            std::string("'") + EXAMPLE_TOOL + "' '" + dir.Path() + "' --name-file > /dev/null";
        if (RunCommand(tool) != 0) throw std::runtime_error("example tool failed");
        testing::WriteStandInCasepostIn(dir.Path());
        host.Files1 = dir.Path();
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

    template <class W>
    W* Control(const char* name) const {
        W* widget = view->findChild<W*>(name);
        if (!widget) ADD_FAILURE() << "no control " << name;
        return widget;
    }
    // The caption of a button or label, the text of a field.
    QString Caption(const char* name) const { return Control<QWidget>(name)->property("text").toString(); }
    void Click(const char* name) { QTest::mouseClick(Control<QPushButton>(name), Qt::LeftButton); }
};

TEST(Form2View, EveryControlStandsUnderItsNameInItsFrame) {
    ExampleDialog d;
    const QStringList controls =
        QString(
            "Label1 Label5 Command5_0 Command5_1 Command3_1 Command3_0 Label2 txtCase_0 Label3 txtDir "
            "Frame1 chkDir_0 chkDir_2 chkDir_1 chkDir_5 chkDir_3 chkDir_4 Label4 txtFact_0 txtFact_1 Label7 "
            "txtFact_2 Label9 Label8 txtGround_0 txtGround_1 txtGround_2 Frame2 optSpect_0 optSpect_1 "
            "optSpect_2 Label6 txtCurve Frame3 optInterp_0 optInterp_1 Frame4 optComb_0 optComb_1 optComb_2 "
            "optComb_3 txtTDur optComb_4 Label11_1 txtDampR Command6 Label10_2 txtCase_3 Label10_1 txtCase_4 "
            "Label10_0 txtCase_1 chkAccel chkShear Frame5 chkMissMass txtCase_2 chkZPA Command1_0 Command1_2 "
            "Command1_1 Command1_3 Command2 Command4 Copy List1 Timer1")
            .split(' ');
    for (const QString& name : controls) EXPECT_TRUE(d.view->findChild<QObject*>(name)) << name.toStdString();

    // Captions with the system's own blanks and spellings.
    EXPECT_EQ(d.Control<QGroupBox>("Frame1")->title(), "Spectum Direction Definition");
    EXPECT_EQ(d.Caption("Label8"), "X                     Y               Z");
    EXPECT_EQ(d.Caption("optComb_3"), "DSM           Duration Secs");
    EXPECT_EQ(d.Caption("Command4"), "Close/Open Output  Viewer");
    EXPECT_EQ(d.Caption("Label1").toStdString(), "Model :" + d.dir.File("SHEAR"));
    EXPECT_EQ(d.view->windowTitle(), "Seismic Analysis - Modal Response Spectrum Analysis     Rel 3-2-7");
    EXPECT_TRUE(d.Control<QGroupBox>("Frame3")->isAncestorOf(d.Control<QRadioButton>("optInterp_1")));
    EXPECT_TRUE(d.Control<QGroupBox>("Frame2")->isAncestorOf(d.Control<QGroupBox>("Frame3")));
    EXPECT_TRUE(d.Control<QGroupBox>("Frame4")->isAncestorOf(d.Control<QLineEdit>("txtTDur")));

    EXPECT_TRUE(d.Control<QRadioButton>("optComb_1")->isChecked());
    EXPECT_EQ(d.Caption("txtFact_0"), "0.7");
    EXPECT_TRUE(d.Control<QListWidget>("List1")->isHidden());
    EXPECT_TRUE(d.Control<QPushButton>("Copy")->isHidden());
    EXPECT_TRUE(QFontInfo(d.Control<QListWidget>("List1")->font()).fixedPitch());
    EXPECT_EQ(d.Control<QTimer>("Timer1")->interval(), 100);

    // The tab order starts with the frequency case, Execute, the angle.
    EXPECT_EQ(QApplication::focusWidget(), d.Control<QLineEdit>("txtCase_0"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), d.Control<QPushButton>("Command1_0"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), d.Control<QLineEdit>("txtDir"));
}

TEST(Form2View, TypingGoesThroughTheKeyFiltersAndFocusSelectsTheText) {
    ExampleDialog d;
    auto typeInto = [&](const char* name, const char* keys) {
        auto* field = d.Control<QLineEdit>(name);
        field->clear();
        QTest::keyClicks(field, keys);
        return field->text().toStdString();
    };
    EXPECT_EQ(typeInto("txtCurve", "1.5e-3xE"), "1.5E-3E");
    EXPECT_EQ(typeInto("txtDir", "1e5/2:"), "15/2");
    EXPECT_EQ(typeInto("txtTDur", "abc"), "abc");

    // The selection follows the focus once the event loop has run.
    auto* field = d.Control<QLineEdit>("txtCase_3");
    d.Control<QLineEdit>("txtCase_4")->setFocus();
    field->setFocus();
    ASSERT_TRUE(field->hasFocus());
    EXPECT_TRUE(Eventually([&] { return field->hasSelectedText(); }));
    EXPECT_EQ(field->selectedText(), "0");
}

TEST(Form2View, ExecuteOnTheExampleModelShowsTheReportAndFollowsCasepost) {
    ExampleDialog d;
    auto* list = d.Control<QListWidget>("List1");
    d.Click("Command4");
    EXPECT_TRUE(list->isVisible());
    EXPECT_TRUE(d.Control<QPushButton>("Copy")->isVisible());
    EXPECT_LT(list->geometry().bottom(), d.Control<QPushButton>("Command4")->geometry().top());
    d.Click("Command4");
    EXPECT_FALSE(list->isVisible());

    // Options 1 of the example, then Execute under the same number.
    d.host.Answers = {"1", "1"};
    d.Click("Command5_0");
    EXPECT_EQ(d.Caption("txtCase_1").toStdString(), "20");
    d.Click("Command1_0");
    EXPECT_EQ(d.host.Messages, std::vector<std::string>{});
    EXPECT_TRUE(testing::Exists(d.dir.File("SHEAR.L20")));
    EXPECT_EQ(ReadFile(d.dir.File("response.cnt")).substr(0, d.dir.File("SHEAR").size()),
              d.dir.File("SHEAR"));

    EXPECT_TRUE(list->isVisible());
    ASSERT_EQ(list->count(), int(d.state.List1.size()));
    ASSERT_GT(list->count(), 10);
    for (int i = 0; i < list->count(); ++i) EXPECT_EQ(list->item(i)->text().toStdString(), d.state.List1[i]);

    auto* timer = d.Control<QTimer>("Timer1");
    EXPECT_TRUE(timer->isActive());
    EXPECT_TRUE(Eventually([&] { return !timer->isActive(); })) << "casepost still running";
    EXPECT_EQ(ReadFile(d.dir.File("casepost.out")), "casepost ran in " + d.dir.Path() + "\n");
    EXPECT_TRUE(d.view->isVisible());
}

}  // namespace
}  // namespace tremodal

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
