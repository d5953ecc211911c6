#include "app/report_command.h"

#include <QCoreApplication>
#if TREMODAL_VIEW
#include <QGuiApplication>
#endif
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "base/number_text.h"
#include "platform/linux_host.h"
#include "report/csv_tables.h"
#include "report/report_run.h"
#include "report/summary_text.h"
#if TREMODAL_VIEW
#include "view/report_charts.h"
#endif

namespace tremodal {

namespace {

// Qt's own remarks (a missing runtime folder of the offscreen platform and
// the like) are not the report's: only its failures go to standard error.
void QuietQtMessages(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(text));
}

}  // namespace

int RunReportCommand(int argc, char** argv) {
    std::vector<std::string> args(argv + 2, argv + argc);
    ReportRequest request;
    if (const std::string wrong = ParseReportArguments(args, request); !wrong.empty()) {
        std::fprintf(stderr, "TreModal: %s\n%s\n", wrong.c_str(), kReportUsage);
        return 2;
    }

    // The charts are drawn into images, never shown: the offscreen platform
    // serves with or without a screen, so a report never needs one.
    qInstallMessageHandler(QuietQtMessages);
    std::unique_ptr<QCoreApplication> app;
#if TREMODAL_VIEW
    if (!request.PlotsDir.empty()) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        app = std::make_unique<QGuiApplication>(argc, argv);
    }
#else
    // The charts are the windows program's: main hands a report with
    // charts to it before it gets here.
    if (!request.PlotsDir.empty()) {
        std::fprintf(stderr, "TreModal: --plots needs %s beside TreModal\n", kViewProgram);
        return 2;
    }
#endif
    if (!app) app = std::make_unique<QCoreApplication>(argc, argv);

    static RunState state;
    LinuxHost machine;
    RecordingHost host(machine);
    try {
        const RunFigures figures = RunReport(state, host, request);
        // Everything is worked out before the first file is written.
        std::vector<std::pair<std::string, std::string>> files;
        if (!request.CsvDir.empty()) {
            files.emplace_back(request.CsvDir + "/modes.csv", ModesTable(figures));
            files.emplace_back(request.CsvDir + "/participation.csv", ParticipationTable(figures));
            files.emplace_back(request.CsvDir + "/base_shear.csv", BaseShearTable(figures));
            files.emplace_back(request.CsvDir + "/storey_shear.csv", StoreyShearTable(figures));
        }
#if TREMODAL_VIEW
        if (!request.PlotsDir.empty()) {
            for (auto& [name, png] : ChartFiles(figures))
                files.emplace_back(request.PlotsDir + "/" + name, png);
        }
#endif
        WriteReportFiles(files);
        std::string text;
        for (const std::string& line : SummaryLines(figures)) text += line + "\n";
        std::fputs(text.c_str(), stdout);
        std::fflush(stdout);
        return 0;
    } catch (const Failure& failure) {
        const std::string number =
            failure.Number() != 0 ? " (error " + GeneralText(i32(failure.Number())) + ")" : "";
        std::fprintf(stderr, "TreModal --report: %s%s\n", failure.what(), number.c_str());
        return 1;
    }
}

}  // namespace tremodal
