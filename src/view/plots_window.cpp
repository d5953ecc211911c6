#include "view/plots_window.h"

#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QScreen>
#include <QTabWidget>
#include <QVBoxLayout>

#include "base/number_text.h"
#include "report/report_run.h"
#include "report/summary_text.h"
#include "view/report_charts.h"

namespace tremodal {

ChartWidget::ChartWidget(Paint paint, QWidget* parent) : QWidget(parent), paint_(std::move(paint)) {
    setMinimumSize(320, 220);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ChartWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint_(painter, size());
}

PlotsWindow::PlotsWindow(const RunFigures& figures, Host& ui, QWidget* parent)
    : QDialog(parent), figures_(figures), ui_(ui) {
    setObjectName("PlotsWindow");
    const bool empty = figures_.Modes.empty() && figures_.Directions.empty();
    setWindowTitle(empty ? QString("Plots")
                         : "Plots - Options " + QString::fromStdString(Trim(figures_.OptionsNumber)));
    ChooseFolder = [this] { return QFileDialog::getExistingDirectory(this, "Save the charts as PNG in"); };

    // The direction chosen in the list, or none.
    const auto chosen = [this] {
        const int index = cboDirection_->currentIndex();
        return index < 0 ? figures_.Directions.size() : std::size_t(index);
    };
    auto* spectrum = new ChartWidget(
        [this](QPainter& p, const QSize& size) { PaintSpectrumChart(p, size, figures_); }, this);
    spectrum->setObjectName("chartSpectrum");
    participation_ = new ChartWidget(
        [this, chosen](QPainter& p, const QSize& size) {
            PaintParticipationChart(p, size, figures_, chosen());
        },
        this);
    participation_->setObjectName("chartParticipation");
    auto* storeyShear = new ChartWidget(
        [this, chosen](QPainter& p, const QSize& size) {
            PaintStoreyShearChart(p, size, figures_, chosen());
        },
        this);
    storeyShear->setObjectName("chartStoreyShear");

    cboDirection_ = new QComboBox(this);
    cboDirection_->setObjectName("cboDirection");
    for (const DirectionFigures& d : figures_.Directions) {
        cboDirection_->addItem(QString::number(d.Direction) + " " +
                               QString::fromStdString(DirectionCaption(d.Direction)));
    }
    connect(cboDirection_, &QComboBox::currentIndexChanged, this, [this, storeyShear] {
        participation_->update();
        storeyShear->update();
    });

    auto* save = new QPushButton("Save PNG", this);
    save->setObjectName("cmdSavePng");
    save->setAutoDefault(false);
    connect(save, &QPushButton::clicked, this, [this] {
        const QString folder = ChooseFolder();
        if (!folder.isEmpty()) SaveCharts(folder.toStdString());
    });
    auto* close = new QPushButton("Close", this);
    close->setObjectName("cmdClose");
    close->setAutoDefault(false);
    connect(close, &QPushButton::clicked, this, &QDialog::close);

    // The spectrum above; the charts of the chosen direction below, one at a
    // time, so that each keeps a readable size on a small screen.
    auto* directionCharts = new QTabWidget(this);
    directionCharts->setObjectName("tabDirectionCharts");
    directionCharts->addTab(participation_, "Participation");
    directionCharts->addTab(storeyShear, "Storey shear");

    status_ = new QLabel(this);
    status_->setObjectName("lblStatus");
    status_->setWordWrap(true);
    status_->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* controls = new QHBoxLayout;
    auto* directionLabel = new QLabel("Direction", this);
    controls->addWidget(directionLabel);
    controls->addWidget(cboDirection_);
    controls->addWidget(status_, 1);
    controls->addWidget(save);
    controls->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(spectrum, 1);
    layout->addWidget(directionCharts, 1);
    layout->addLayout(controls);
    if (empty) {
        // Before any run there is nothing to draw or save.
        spectrum->hide();
        directionCharts->hide();
        directionLabel->hide();
        cboDirection_->hide();
        controls->insertStretch(0, 1);
        save->setEnabled(false);
        status_->setText("Nothing to plot yet: run an options set first.");
        status_->setAlignment(Qt::AlignCenter);
        layout->insertWidget(0, status_, 1);
    }

    // Within the screen, a taskbar and the title bar allowed for.
    QSize wanted(1000, 900);
    if (const QScreen* screen = this->screen()) {
        const QSize room = screen->availableGeometry().size();
        wanted = wanted.boundedTo(QSize(room.width() * 9 / 10, room.height() * 9 / 10));
    }
    resize(wanted);
}

bool PlotsWindow::SaveCharts(const std::string& folder) {
    try {
        std::vector<std::pair<std::string, std::string>> files;
        for (auto& [name, png] : ChartFiles(figures_))
            files.emplace_back(folder + "/" + name, std::move(png));
        WriteReportFiles(files);
        QStringList names;
        for (const auto& [path, png] : files) names << QString::fromStdString(path.substr(folder.size() + 1));
        status_->setText("Saved " + names.join(", ") + " in " + QString::fromStdString(folder));
        return true;
    } catch (const Failure& failure) {
        ui_.ShowMessage("Error " + GeneralText(i32(failure.Number())) + " - " + failure.what(), "TREMODAL");
        return false;
    }
}

}  // namespace tremodal
