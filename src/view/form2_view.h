// Form2 on the screen: every control of the dialog as a Qt widget named as
// the dialog names it (txtCase_0, chkDir_3, optComb_1, Command1_2, List1...),
// and nothing else. Before a handler runs the widgets are copied into the
// dialog's record, afterwards back; the handlers themselves are the dialog
// logic's.
#pragma once

#include <QPointer>
#include <QWidget>
#include <array>
#include <functional>
#include <map>

#include "dialog/dialog_host.h"
#include "dialog/form2.h"
#include "report/run_figures.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QTimer;

namespace tremodal {

class Form2View : public QWidget, public DialogHost {
public:
    // Builds the form on the model in hand and runs Form_Load. The state
    // outlives the view.
    explicit Form2View(RunState& state, QWidget* parent = nullptr);
    ~Form2View() override;

    // DialogHost.
    void SetClipboardText(const std::string& text) override;
    void SetWaitCursor(bool waiting) override;
    void Refresh() override;
    bool StartEditor(const std::string& program, const std::string& file) override;
    void EndProgram() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    using KeyPress = std::function<void(i16&)>;

    void BuildControls();
    void SetTabOrder();
    // A text field; with a key filter it also selects its text on focus.
    QLineEdit* Field(const char* name, KeyPress filter = nullptr);
    QPushButton* Button(const char* name, const char* caption, std::function<void()> handler);
    // A check box; the three that count at once have their click handler.
    QCheckBox* Box(const char* name, const char* caption, void (*click)(RunState&, const Form2&) = nullptr);

    // Widgets into the record, a handler, the record back into the widgets.
    void Handle(const std::function<void()>& handler);
    void PullControls();
    void PushControls();
    void PlaceList1();
    void Timer1_Timer();
    // A run button: the figures of the last run start afresh with it.
    void RunButton(int index);
    void Plots_Click();

    RunState& state_;
    Form2 form_;

    std::array<QLineEdit*, 5> txtCase_{};
    QLineEdit* txtDir_ = nullptr;
    std::array<QLineEdit*, 3> txtFact_{};
    std::array<QLineEdit*, 3> txtGround_{};
    QLineEdit* txtCurve_ = nullptr;
    QLineEdit* txtTDur_ = nullptr;
    QLineEdit* txtDampR_ = nullptr;
    std::array<QCheckBox*, 6> chkDir_{};
    QCheckBox* chkAccel_ = nullptr;
    QCheckBox* chkShear_ = nullptr;
    QCheckBox* chkMissMass_ = nullptr;
    QCheckBox* chkZPA_ = nullptr;
    std::array<QRadioButton*, 3> optSpect_{};
    std::array<QRadioButton*, 2> optInterp_{};
    std::array<QRadioButton*, 5> optComb_{};
    QLabel* Label1_ = nullptr;
    QLabel* Label5_ = nullptr;
    QPushButton* Command1_0_ = nullptr;
    QPushButton* Command4_ = nullptr;
    QPushButton* Copy_ = nullptr;
    QPushButton* Plots_ = nullptr;
    QPointer<QWidget> plotsWindow_;  // the open charts, if any; gone once closed
    // The figures of the last run, collected as it goes, for the charts.
    RunFigures figures_;
    QListWidget* List1_ = nullptr;
    std::vector<std::string> shownList1_;  // the report as List1 shows it
    QTimer* Timer1_ = nullptr;
    std::map<QObject*, KeyPress> keyFilters_;
};

}  // namespace tremodal
