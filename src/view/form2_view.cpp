#include "view/form2_view.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProcess>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>

#include "base/number_text.h"
#include "dialog/commands.h"
#include "run/startup.h"
#include "view/plots_window.h"

namespace tremodal {

namespace {

QString Text(const std::string& text) { return QString::fromStdString(text); }

// A field keeps its cursor and undo history unless the command changed it.
void SetFieldText(QLineEdit* field, const std::string& text) {
    const QString value = Text(text);
    if (field->text() != value) field->setText(value);
}

template <std::size_t N>
int SelectedIndex(const std::array<QRadioButton*, N>& group) {
    for (std::size_t i = 0; i < N; ++i) {
        if (group[i]->isChecked()) return int(i);
    }
    return -1;
}

// Selects one button of a group, or none for an index outside it.
template <std::size_t N>
void Select(const std::array<QRadioButton*, N>& group, int index) {
    if (index >= 0 && index < int(N)) {
        group[index]->setChecked(true);
        return;
    }
    for (QRadioButton* button : group) {
        button->setAutoExclusive(false);
        button->setChecked(false);
        button->setAutoExclusive(true);
    }
}

// The reports are built in columns: Courier New where it is installed,
// otherwise the system's fixed-pitch font, at 8.25 point.
QFont ReportFont() {
    QFont font = QFontDatabase::families().contains("Courier New")
                     ? QFont("Courier New")
                     : QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setStyleHint(QFont::TypeWriter);
    font.setFixedPitch(true);
    font.setPointSizeF(8.25);
    return font;
}

QLabel* NamedLabel(const char* name, const char* caption) {
    auto* label = new QLabel(caption);
    label->setObjectName(name);
    return label;
}

}  // namespace

Form2View::Form2View(RunState& state, QWidget* parent) : QWidget(parent), state_(state) {
    setObjectName("Form2");
    form_.Screen = this;
    BuildControls();
    SetTabOrder();
    Form_Load(state_, form_);
    PushControls();
    // The charts need the participation of every direction, which a run
    // keeps only for the last: the run hands each over as it goes.
    state_.DirectionDone = [this](RunState& s, i16 d) { RecordDirection(s, d, figures_, false); };
    state_.RunDone = [this](RunState& s) { RecordRun(s, figures_); };
}

Form2View::~Form2View() {
    state_.DirectionDone = nullptr;
    state_.RunDone = nullptr;
}

void Form2View::RunButton(int index) {
    figures_ = RunFigures{};
    Command1_Click(state_, form_, index);
}

void Form2View::Plots_Click() {
    if (plotsWindow_) plotsWindow_->close();
    auto* window = new PlotsWindow(figures_, *state_.Ui, this);
    window->setWindowFlag(Qt::Window);
    window->setAttribute(Qt::WA_DeleteOnClose);
    plotsWindow_ = window;
    window->show();
}

QLineEdit* Form2View::Field(const char* name, KeyPress filter) {
    auto* field = new QLineEdit;
    field->setObjectName(name);
    field->setMaximumWidth(90);
    if (filter) {
        keyFilters_[field] = std::move(filter);
        field->installEventFilter(this);
    }
    return field;
}

QPushButton* Form2View::Button(const char* name, const char* caption, std::function<void()> handler) {
    auto* button = new QPushButton(caption);
    button->setObjectName(name);
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, [this, handler] { Handle(handler); });
    return button;
}

QCheckBox* Form2View::Box(const char* name, const char* caption, void (*click)(RunState&, const Form2&)) {
    auto* box = new QCheckBox(caption);
    box->setObjectName(name);
    if (click)
        connect(box, &QCheckBox::clicked, this,
                [this, click] { Handle([this, click] { click(state_, form_); }); });
    return box;
}

void Form2View::BuildControls() {
    auto* page = new QGridLayout(this);

    // Head of the dialog.
    Label1_ = NamedLabel("Label1", "Label1");
    Label5_ = NamedLabel("Label5", "");
    page->addWidget(Label1_, 0, 0, 1, 2);
    page->addWidget(Label5_, 1, 0, 1, 2);
    auto* files = new QHBoxLayout;
    files->addWidget(Button("Command5_0", "Open Options", [this] { Command5_Click(state_, form_, 0); }));
    files->addWidget(Button("Command5_1", "Save Options", [this] { Command5_Click(state_, form_, 1); }));
    files->addWidget(
        Button("Command3_1", "Get Response Spectrum Curve", [this] { Command3_Click(state_, form_, 1); }));
    files->addWidget(Button("Command3_0", "Create/Edit Resp Spectrum Curve",
                            [this] { Command3_Click(state_, form_, 0); }));
    page->addLayout(files, 2, 0, 1, 2);
    auto* head = new QHBoxLayout;
    head->addWidget(NamedLabel("Label2", "Frequency Case Number"));
    head->addWidget(txtCase_[0] = Field("txtCase_0", [](i16& k) { txtCase_KeyPress(0, k); }));
    head->addSpacing(20);
    head->addWidget(NamedLabel("Label3", "Principal Direction Angle"));
    head->addWidget(txtDir_ = Field("txtDir", txtDir_KeyPress));
    head->addStretch();
    page->addLayout(head, 3, 0, 1, 2);

    // Frame1: the directions of the spectrum; the factor column beside them.
    auto* frame1 = new QGroupBox("Spectum Direction Definition");
    frame1->setObjectName("Frame1");
    auto* directions = new QGridLayout(frame1);
    const int shownOrder[6] = {0, 2, 1, 5, 3, 4};  // the boxes from top to bottom, by index
    const char* dirCaptions[6] = {"Principal (Major wave)", "Vertical",
                                  "Lateral (Minor wave)",   "Rotation (Minor wave)",
                                  "Rotation (Vertical)",    "Rotation (Major wave)"};
    for (int row = 0; row < 6; ++row) {
        const int k = shownOrder[row];
        const std::string name = "chkDir_" + GeneralText(i32(k));
        chkDir_[k] = Box(name.c_str(), dirCaptions[k]);
        directions->addWidget(chkDir_[k], row, 0);
        if (row == 0) directions->addWidget(NamedLabel("Label4", "Direction Factor"), 0, 1);
        if (row == 1)
            directions->addWidget(txtFact_[0] = Field("txtFact_0", [](i16& k) { txtFact_KeyPress(0, k); }), 1,
                                  1);
        if (row == 2)
            directions->addWidget(txtFact_[1] = Field("txtFact_1", [](i16& k) { txtFact_KeyPress(1, k); }), 2,
                                  1);
        if (row == 3) directions->addWidget(NamedLabel("Label7", "Shear Wave Velocity (m/s)"), 3, 1);
        if (row == 4)
            directions->addWidget(txtFact_[2] = Field("txtFact_2", [](i16& k) { txtFact_KeyPress(2, k); }), 4,
                                  1);
    }
    directions->addWidget(NamedLabel("Label9", "Rotation Datum (Ground)"), 6, 0, 1, 2);
    directions->addWidget(NamedLabel("Label8", "X                     Y               Z"), 7, 0, 1, 2);
    auto* ground = new QHBoxLayout;
    for (int i = 0; i < 3; ++i) {
        const std::string name = "txtGround_" + GeneralText(i32(i));
        ground->addWidget(txtGround_[i] = Field(name.c_str(), [i](i16& k) { txtGround_KeyPress(i, k); }));
    }
    directions->addLayout(ground, 8, 0, 1, 2);
    directions->setRowStretch(9, 1);
    page->addWidget(frame1, 4, 0, 2, 1);

    // Frame2: the curve, with Frame3 for its interpolation inside.
    auto* frame2 = new QGroupBox("Response Spectrum Curve");
    frame2->setObjectName("Frame2");
    auto* curve = new QGridLayout(frame2);
    const char* spectCaptions[3] = {"Displacement", "Velocity", "Acceleration"};
    for (int i = 0; i < 3; ++i) {
        optSpect_[i] = new QRadioButton(spectCaptions[i]);
        optSpect_[i]->setObjectName(QString("optSpect_%1").arg(i));
        curve->addWidget(optSpect_[i], i, 0);
    }
    auto* factor = new QHBoxLayout;
    factor->addWidget(NamedLabel("Label6", "Curve Factor"));
    factor->addWidget(txtCurve_ = Field("txtCurve", txtCurve_KeyPress));
    curve->addLayout(factor, 3, 0);
    auto* frame3 = new QGroupBox("Interpolation");
    frame3->setObjectName("Frame3");
    auto* interp = new QVBoxLayout(frame3);
    const char* interpCaptions[2] = {"Linear", "Logarithmic"};
    for (int i = 0; i < 2; ++i) {
        optInterp_[i] = new QRadioButton(interpCaptions[i]);
        optInterp_[i]->setObjectName(QString("optInterp_%1").arg(i));
        interp->addWidget(optInterp_[i]);
    }
    curve->addWidget(frame3, 0, 1, 4, 1);
    page->addWidget(frame2, 4, 1);

    // Frame4: the modal combination, the duration on the DSM line, damping.
    auto* frame4 = new QGroupBox("Modal Combination Method");
    frame4->setObjectName("Frame4");
    auto* comb = new QGridLayout(frame4);
    for (int i = 0; i < 5; ++i) {
        optComb_[i] = new QRadioButton(kOptCombCaptions[i]);
        optComb_[i]->setObjectName(QString("optComb_%1").arg(i));
        comb->addWidget(optComb_[i], i, 0);
        if (i == 3) comb->addWidget(txtTDur_ = Field("txtTDur"), 3, 1);
    }
    auto* damping = new QHBoxLayout;
    damping->addWidget(NamedLabel("Label11_1", "Damping Ratio"));
    damping->addWidget(txtDampR_ = Field("txtDampR"));
    damping->addWidget(Button("Command6", "By Mode", [this] { Command6_Click(state_, form_); }));
    comb->addLayout(damping, 5, 0, 1, 2);
    page->addWidget(frame4, 5, 1);

    // Below the groups: the modes, the results case, the two report boxes.
    auto* below = new QGridLayout;
    below->addWidget(NamedLabel("Label10_2", "Use only one mode           Mode"), 0, 0);
    below->addWidget(txtCase_[3] = Field("txtCase_3", [](i16& k) { txtCase_KeyPress(3, k); }), 0, 1);
    below->addWidget(NamedLabel("Label10_1", "Base Elem Force Sign on  Mode"), 1, 0);
    below->addWidget(txtCase_[4] = Field("txtCase_4", [](i16& k) { txtCase_KeyPress(4, k); }), 1, 1);
    below->addWidget(NamedLabel("Label10_0", "Results Case"), 2, 0);
    below->addWidget(txtCase_[1] = Field("txtCase_1", [](i16& k) { txtCase_KeyPress(1, k); }), 2, 1);
    below->addWidget(chkAccel_ = Box("chkAccel", "Create Acceleratons File"), 3, 0, 1, 2);
    below->addWidget(chkShear_ = Box("chkShear", "Show Comp Modal Shear", chkShear_Click), 4, 0, 1, 2);
    page->addLayout(below, 6, 0);

    // Frame5: missing mass.
    auto* frame5 = new QGroupBox("Missing Mass");
    frame5->setObjectName("Frame5");
    auto* missMass = new QGridLayout(frame5);
    missMass->addWidget(
        chkMissMass_ = Box("chkMissMass", "Create/Read Missing Mass     Start Case", chkMissMass_Click), 0,
        0);
    missMass->addWidget(txtCase_[2] = Field("txtCase_2", [](i16& k) { txtCase_KeyPress(2, k); }), 0, 1);
    missMass->addWidget(chkZPA_ = Box("chkZPA", "ZPA Use Higest Mode", chkZPA_Click), 1, 0, 1, 2);
    page->addWidget(frame5, 6, 1, Qt::AlignTop);

    // Bottom: the run buttons, Close, and the viewer's own row.
    auto* runs = new QHBoxLayout;
    runs->addWidget(Command1_0_ = Button("Command1_0", "Execute", [this] { RunButton(0); }));
    runs->addWidget(Button("Command1_2", "Execute(Partial)", [this] { RunButton(2); }));
    runs->addWidget(Button("Command1_1", "Batch", [this] { RunButton(1); }));
    runs->addWidget(Button("Command1_3", "Batch (Partial)", [this] { RunButton(3); }));
    runs->addWidget(Button("Command2", "Close", [this] { Command2_Click(state_, form_); }));
    page->addLayout(runs, 7, 0, 1, 2);
    auto* viewer = new QHBoxLayout;
    viewer->addWidget(Command4_ = Button("Command4", "Close/Open Output  Viewer",
                                         [this] { Command4_Click(state_, form_); }));
    viewer->addWidget(Copy_ = Button("Copy", "Copy", [this] { Copy_Click(state_, form_); }));
    // The charts of the last run, shown with the viewer.
    Plots_ = new QPushButton("Plots");
    Plots_->setObjectName("Plots");
    Plots_->setAutoDefault(false);
    Plots_->hide();
    connect(Plots_, &QPushButton::clicked, this, [this] { Plots_Click(); });
    viewer->addWidget(Plots_);
    viewer->addStretch();
    page->addLayout(viewer, 8, 0, 1, 2);

    // The report viewer lies over the controls, outside the layout.
    List1_ = new QListWidget(this);
    List1_->setObjectName("List1");
    List1_->setFont(ReportFont());
    List1_->setSelectionMode(QAbstractItemView::SingleSelection);
    List1_->hide();

    // F1 opens the suite's help file, where it is installed.
    connect(new QShortcut(QKeySequence::HelpContents, this), &QShortcut::activated, this, [this] {
        const QString help = Text(state_.Model.HelpFile);
        if (QFileInfo(help).isFile()) QProcess::startDetached("xdg-open", {help});
    });

    Timer1_ = new QTimer(this);
    Timer1_->setObjectName("Timer1");
    Timer1_->setInterval(100);
    connect(Timer1_, &QTimer::timeout, this, [this] { Timer1_Timer(); });
}

void Form2View::SetTabOrder() {
    // txtCase(0) first, then Execute, then the angle; the rest as created.
    QList<QWidget*> order = {txtCase_[0], Command1_0_, txtDir_};
    for (QWidget* w : findChildren<QWidget*>()) {
        if (w->focusPolicy() & Qt::TabFocus && !order.contains(w) && w != List1_) order.append(w);
    }
    order.append(List1_);
    for (qsizetype i = 1; i < order.size(); ++i) setTabOrder(order[i - 1], order[i]);
}

void Form2View::Handle(const std::function<void()>& handler) {
    PullControls();
    handler();
    PushControls();
    if (state_.Timer1Enabled && !Timer1_->isActive()) Timer1_->start();
}

void Form2View::PullControls() {
    for (int i = 0; i < 5; ++i) form_.txtCase[i] = txtCase_[i]->text().toStdString();
    form_.txtDir = txtDir_->text().toStdString();
    for (int i = 0; i < 3; ++i) form_.txtFact[i] = txtFact_[i]->text().toStdString();
    for (int i = 0; i < 3; ++i) form_.txtGround[i] = txtGround_[i]->text().toStdString();
    form_.txtCurve = txtCurve_->text().toStdString();
    form_.txtTDur = txtTDur_->text().toStdString();
    form_.txtDampR = txtDampR_->text().toStdString();
    for (int k = 0; k < 6; ++k) form_.chkDir[k] = chkDir_[k]->isChecked() ? 1 : 0;
    form_.chkAccel = chkAccel_->isChecked() ? 1 : 0;
    form_.chkShear = chkShear_->isChecked() ? 1 : 0;
    form_.chkMissMass = chkMissMass_->isChecked() ? 1 : 0;
    form_.chkZPA = chkZPA_->isChecked() ? 1 : 0;
    form_.optSpect = SelectedIndex(optSpect_);
    form_.optInterp = SelectedIndex(optInterp_);
    form_.optComb = SelectedIndex(optComb_);
}

void Form2View::PushControls() {
    setWindowTitle(Text(form_.Caption));
    Label1_->setText(Text(form_.Label1));
    Label5_->setText(Text(form_.Label5));
    for (int i = 0; i < 5; ++i) SetFieldText(txtCase_[i], form_.txtCase[i]);
    SetFieldText(txtDir_, form_.txtDir);
    for (int i = 0; i < 3; ++i) SetFieldText(txtFact_[i], form_.txtFact[i]);
    for (int i = 0; i < 3; ++i) SetFieldText(txtGround_[i], form_.txtGround[i]);
    SetFieldText(txtCurve_, form_.txtCurve);
    SetFieldText(txtTDur_, form_.txtTDur);
    SetFieldText(txtDampR_, form_.txtDampR);
    for (int k = 0; k < 6; ++k) chkDir_[k]->setChecked(form_.chkDir[k] != 0);
    chkAccel_->setChecked(form_.chkAccel != 0);
    chkShear_->setChecked(form_.chkShear != 0);
    chkMissMass_->setChecked(form_.chkMissMass != 0);
    chkZPA_->setChecked(form_.chkZPA != 0);
    Select(optSpect_, form_.optSpect);
    Select(optInterp_, form_.optInterp);
    Select(optComb_, form_.optComb);

    // The report is rebuilt only when the run has changed it, anywhere: two
    // runs that differ only in their middle lines show their own reports.
    if (shownList1_ != state_.List1) {
        shownList1_ = state_.List1;
        List1_->clear();
        for (const std::string& line : shownList1_) List1_->addItem(Text(line));
    }
    List1_->setVisible(form_.List1Visible);
    Copy_->setVisible(form_.CopyVisible);
    Plots_->setVisible(form_.CopyVisible);
    PlaceList1();
}

void Form2View::PlaceList1() {
    // From the top edge down to just above the row of Command4 and Copy.
    const int left = layout()->contentsMargins().left();
    const int top = 3;
    const int bottom = Command4_->geometry().top() - 6;
    List1_->setGeometry(left, top, width() - 2 * left, std::max(0, bottom - top));
    List1_->raise();
}

void Form2View::Timer1_Timer() {
    tremodal::Timer1_Timer(state_);
    if (!state_.Timer1Enabled) Timer1_->stop();
}

bool Form2View::eventFilter(QObject* watched, QEvent* event) {
    auto filter = keyFilters_.find(watched);
    if (filter == keyFilters_.end()) return QWidget::eventFilter(watched, event);
    auto* field = static_cast<QLineEdit*>(watched);
    if (event->type() == QEvent::FocusIn) {
        // After the click that gave the focus has placed the cursor.
        QTimer::singleShot(0, field, &QLineEdit::selectAll);
        return false;
    }
    if (event->type() != QEvent::KeyPress) return false;
    const QString typed = static_cast<QKeyEvent*>(event)->text();
    if (typed.size() != 1) return false;  // no character: cursor keys, Delete
    // Characters beyond Latin-1 count as letters, which the filters drop.
    const ushort code = typed[0].unicode();
    i16 key = i16(code > 255 ? 255 : code);
    const i16 original = key;
    filter->second(key);
    if (key == original) return false;
    if (key != 0) field->insert(QString(QChar(key)));
    return true;
}

void Form2View::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    PlaceList1();
}

void Form2View::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    if (event->spontaneous()) return;
    // Centred on its screen, the focus in the frequency case field.
    if (QScreen* s = screen()) move(s->availableGeometry().center() - rect().center());
    PlaceList1();
    txtCase_[0]->setFocus();
}

void Form2View::SetClipboardText(const std::string& text) {
    QGuiApplication::clipboard()->setText(Text(text));
}

void Form2View::SetWaitCursor(bool waiting) {
    if (waiting) {
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
    }
}

void Form2View::Refresh() {
    PushControls();
    repaint();
}

bool Form2View::StartEditor(const std::string& program, const std::string& file) {
    // Directly, with the file as the one argument: no shell sees the name.
    return QProcess::startDetached(Text(program), {Text(file)});
}

void Form2View::EndProgram() {
    close();
    QCoreApplication::exit(0);
}

}  // namespace tremodal
