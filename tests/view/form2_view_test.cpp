// The dialog on an offscreen screen: every control under its name, typing
// through the key filters, the report viewer, and one Execute on the example
// model with a stand-in casepost.
#include "view/form2_view.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <QApplication>
#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include "platform/linux_host.h"
#include "runcontrol/startup.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ReadFile;
using testing::RunCommand;
using testing::TempDir;

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
        const std::string tool = std::string("'") + EXAMPLE_TOOL + "' '" + dir.Path() + "' --name-file > /dev/null";
        if (RunCommand(tool) != 0) throw std::runtime_error("example tool failed");
        testing::WriteStandInCasepostIn(dir.Path());
        host.Files1 = dir.Path();
        state.Ui = &host;
        if (Main(state, "") != StartOutcome::Dialog) throw std::runtime_error("start-up failed");
        view = std::make_unique<Form2View>(state);
        view->show();
    }
    ~ExampleDialog() { std::filesystem::current_path(std::filesystem::temp_directory_path()); }

    template <class W>
    W* Control(const char* name) const {
        W* widget = view->findChild<W*>(name);
        if (!widget) ADD_FAILURE() << "no control " << name;
        return widget;
    }
    QString Caption(const char* name) const {
        QObject* control = view->findChild<QObject*>(name);
        if (auto* button = qobject_cast<QAbstractButton*>(control)) return button->text();
        if (auto* label = qobject_cast<QLabel*>(control)) return label->text();
        if (auto* frame = qobject_cast<QGroupBox*>(control)) return frame->title();
        if (auto* field = qobject_cast<QLineEdit*>(control)) return field->text();
        ADD_FAILURE() << "no control " << name;
        return {};
    }
    void Click(const char* name) { QTest::mouseClick(Control<QPushButton>(name), Qt::LeftButton); }
};

TEST(Form2View, EveryControlStandsUnderItsNameWithItsCaptionOrFreshValue) {
    ExampleDialog d;
    const std::pair<const char*, const char*> captions[] = {
        {"Label1", "Model :"},  // completed below
        {"Label5", ""},
        {"Command5_0", "Open Options"},
        {"Command5_1", "Save Options"},
        {"Command3_1", "Get Response Spectrum Curve"},
        {"Command3_0", "Create/Edit Resp Spectrum Curve"},
        {"Label2", "Frequency Case Number"},
        {"txtCase_0", ""},
        {"Label3", "Principal Direction Angle"},
        {"txtDir", "0"},
        {"Frame1", "Spectum Direction Definition"},
        {"chkDir_0", "Principal (Major wave)"},
        {"chkDir_2", "Lateral (Minor wave)"},
        {"chkDir_1", "Vertical"},
        {"chkDir_5", "Rotation (Major wave)"},
        {"chkDir_3", "Rotation (Minor wave)"},
        {"chkDir_4", "Rotation (Vertical)"},
        {"Label4", "Direction Factor"},
        {"txtFact_0", "0.7"},
        {"txtFact_1", "0.5"},
        {"Label7", "Shear Wave Velocity (m/s)"},
        {"txtFact_2", "400"},
        {"Label9", "Rotation Datum (Ground)"},
        {"Label8", "X                     Y               Z"},
        {"txtGround_0", "0"},
        {"txtGround_1", "0"},
        {"txtGround_2", "0"},
        {"Frame2", "Response Spectrum Curve"},
        {"optSpect_0", "Displacement"},
        {"optSpect_1", "Velocity"},
        {"optSpect_2", "Acceleration"},
        {"Label6", "Curve Factor"},
        {"txtCurve", "9.81"},
        {"Frame3", "Interpolation"},
        {"optInterp_0", "Linear"},
        {"optInterp_1", "Logarithmic"},
        {"Frame4", "Modal Combination Method"},
        {"optComb_0", "SRSS"},
        {"optComb_1", "CQC"},
        {"optComb_2", "10% Group"},
        {"optComb_3", "DSM           Duration Secs"},
        {"txtTDur", "10"},
        {"optComb_4", "ABS Sum"},
        {"Label11_1", "Damping Ratio"},
        {"txtDampR", "0.05"},
        {"Command6", "By Mode"},
        {"Label10_2", "Use only one mode           Mode"},
        {"txtCase_3", "0"},
        {"Label10_1", "Base Elem Force Sign on  Mode"},
        {"txtCase_4", "0"},
        {"Label10_0", "Results Case"},
        {"txtCase_1", ""},
        {"chkAccel", "Create Acceleratons File"},
        {"chkShear", "Show Comp Modal Shear"},
        {"Frame5", "Missing Mass"},
        {"chkMissMass", "Create/Read Missing Mass     Start Case"},
        {"txtCase_2", "0"},
        {"chkZPA", "ZPA Use Higest Mode"},
        {"Command1_0", "Execute"},
        {"Command1_2", "Execute(Partial)"},
        {"Command1_1", "Batch"},
        {"Command1_3", "Batch (Partial)"},
        {"Command2", "Close"},
        {"Command4", "Close/Open Output  Viewer"},
        {"Copy", "Copy"},
    };
    for (const auto& [name, caption] : captions) {
        if (std::string(name) == "Label1") continue;
        EXPECT_EQ(d.Caption(name).toStdString(), caption) << name;
    }
    EXPECT_EQ(d.Caption("Label1").toStdString(), "Model :" + d.dir.File("SHEAR"));
    EXPECT_EQ(d.view->windowTitle().toStdString(), "Seismic Analysis - Modal Response Spectrum Analysis     Rel 3-2-7");

    // Each control inside its group frame.
    EXPECT_TRUE(d.Control<QGroupBox>("Frame1")->isAncestorOf(d.Control<QLineEdit>("txtGround_2")));
    EXPECT_TRUE(d.Control<QGroupBox>("Frame3")->isAncestorOf(d.Control<QRadioButton>("optInterp_1")));
    EXPECT_TRUE(d.Control<QGroupBox>("Frame2")->isAncestorOf(d.Control<QGroupBox>("Frame3")));
    EXPECT_TRUE(d.Control<QGroupBox>("Frame4")->isAncestorOf(d.Control<QPushButton>("Command6")));
    EXPECT_TRUE(d.Control<QGroupBox>("Frame5")->isAncestorOf(d.Control<QLineEdit>("txtCase_2")));

    EXPECT_TRUE(d.Control<QCheckBox>("chkDir_0")->isChecked());
    EXPECT_FALSE(d.Control<QCheckBox>("chkDir_1")->isChecked());
    EXPECT_TRUE(d.Control<QCheckBox>("chkZPA")->isChecked());
    EXPECT_TRUE(d.Control<QRadioButton>("optSpect_2")->isChecked());
    EXPECT_TRUE(d.Control<QRadioButton>("optInterp_0")->isChecked());
    EXPECT_TRUE(d.Control<QRadioButton>("optComb_1")->isChecked());
    EXPECT_TRUE(d.Control<QListWidget>("List1")->isHidden());
    EXPECT_TRUE(d.Control<QPushButton>("Copy")->isHidden());
    EXPECT_TRUE(QFontInfo(d.Control<QListWidget>("List1")->font()).fixedPitch());
    auto* timer = d.Control<QTimer>("Timer1");
    EXPECT_FALSE(timer->isActive());
    EXPECT_EQ(timer->interval(), 100);

    // The tab order starts with the frequency case, Execute, the angle.
    ASSERT_TRUE(QTest::qWaitForWindowActive(d.view.get()));
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
    EXPECT_EQ(typeInto("txtFact_2", "4e2"), "4E2");
    EXPECT_EQ(typeInto("txtGround_1", "-2,5a"), "-2,5");
    EXPECT_EQ(typeInto("txtDir", "1e5/2"), "15/2");
    EXPECT_EQ(typeInto("txtCase_0", " 3q"), " 3");
    EXPECT_EQ(typeInto("txtTDur", "abc"), "abc");
    EXPECT_EQ(typeInto("txtDampR", "x.05"), "x.05");

    auto* field = d.Control<QLineEdit>("txtCase_3");
    d.Control<QLineEdit>("txtCase_4")->setFocus();
    field->setFocus();
    QTest::qWait(20);
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
    EXPECT_EQ(ReadFile(d.dir.File("response.cnt")).substr(0, d.dir.File("SHEAR").size()), d.dir.File("SHEAR"));

    EXPECT_TRUE(list->isVisible());
    ASSERT_EQ(list->count(), int(d.state.List1.size()));
    ASSERT_GT(list->count(), 10);
    for (int i = 0; i < list->count(); ++i) EXPECT_EQ(list->item(i)->text().toStdString(), d.state.List1[i]);
    // The report is also the results case's comment lines.
    EXPECT_NE(ReadFile(d.dir.File("SHEAR.L20")).find(d.state.List1[3]), std::string::npos);

    auto* timer = d.Control<QTimer>("Timer1");
    EXPECT_TRUE(timer->isActive());
    for (int i = 0; i < 200 && timer->isActive(); ++i) QTest::qWait(50);
    EXPECT_FALSE(timer->isActive());
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
