// The charts of the dialog's last run in a window of their own: the response
// spectrum with the modes on it, the participation of a direction chosen in
// a list and its storey shears, and a button that saves the charts of every
// direction as PNG files, the same files as "TreModal --report N --plots DIR"
// writes, and names them. Before any run it says there is nothing to plot.
#pragma once

#include <QDialog>
#include <QString>
#include <functional>
#include <string>

#include "base/host.h"
#include "report/run_figures.h"

class QComboBox;
class QLabel;
class QPushButton;

namespace tremodal {

// One chart, painted at whatever size the widget has.
class ChartWidget : public QWidget {
public:
    using Paint = std::function<void(QPainter&, const QSize&)>;
    explicit ChartWidget(Paint paint, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Paint paint_;
};

class PlotsWindow : public QDialog {
public:
    // The figures are copied; messages go to the host.
    PlotsWindow(const RunFigures& figures, Host& ui, QWidget* parent = nullptr);

    // Writes the chart files into the folder and names them in the window; a
    // failure is told in a message. Returns whether the files were written.
    bool SaveCharts(const std::string& folder);

    // Asks for the folder of the saved charts; empty text for none. A folder
    // dialog unless replaced.
    std::function<QString()> ChooseFolder;

private:
    RunFigures figures_;
    Host& ui_;
    QComboBox* cboDirection_ = nullptr;
    ChartWidget* participation_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace tremodal
