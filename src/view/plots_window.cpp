#include "view/plots_window.h"

#include <QComboBox>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "base/number_text.h"
#include "report/report_run.h"
#include "report/summary_text.h"
#include "view/report_charts.h"

namespace tremodal {

ChartWidget::ChartWidget(Paint paint, QWidget* parent) : QWidget(parent), paint_(std::move(paint)) {
    setMinimumSize(560, 360);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void ChartWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    paint_(painter, size());
}

PlotsWindow::PlotsWindow(const RunFigures& figures, Host& ui, QWidget* parent)
    : QDialog(parent), figures_(figures), ui_(ui) {
    setObjectName("PlotsWindow");
    setWindowTitle("Plots - Options " + QString::fromStdString(Trim(figures_.OptionsNumber)));
    ChooseFolder = [this] { return QFileDialog::getExistingDirectory(this, "Save the charts as PNG in"); };

    auto* spectrum = new ChartWidget(
        [this](QPainter& p, const QSize& size) { PaintSpectrumChart(p, size, figures_); }, this);
    spectrum->setObjectName("chartSpectrum");
    participation_ = new ChartWidget(
        [this](QPainter& p, const QSize& size) {
            const int chosen = cboDirection_->currentIndex();
            PaintParticipationChart(p, size, figures_,
                                    chosen < 0 ? figures_.Directions.size() : std::size_t(chosen));
        },
        this);
    participation_->setObjectName("chartParticipation");

    cboDirection_ = new QComboBox(this);
    cboDirection_->setObjectName("cboDirection");
    for (const DirectionFigures& d : figures_.Directions) {
        cboDirection_->addItem(QString::number(d.Direction) + " " +
                               QString::fromStdString(DirectionCaption(d.Direction)));
    }
    connect(cboDirection_, &QComboBox::currentIndexChanged, participation_,
            [this] { participation_->update(); });

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

    auto* controls = new QHBoxLayout;
    controls->addWidget(new QLabel("Participation of direction", this));
    controls->addWidget(cboDirection_);
    controls->addStretch();
    controls->addWidget(save);
    controls->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(spectrum, 1);
    layout->addLayout(controls);
    layout->addWidget(participation_, 1);
    resize(1000, 960);
}

bool PlotsWindow::SaveCharts(const std::string& folder) {
    try {
        std::vector<std::pair<std::string, std::string>> files;
        for (auto& [name, png] : ChartFiles(figures_))
            files.emplace_back(folder + "/" + name, std::move(png));
        WriteReportFiles(files);
        return true;
    } catch (const Failure& failure) {
        ui_.ShowMessage("Error " + GeneralText(i32(failure.Number())) + " - " + failure.what(), "TREMODAL");
        return false;
    }
}

}  // namespace tremodal
