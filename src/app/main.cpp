// TreModal: the modal response spectrum analysis of the suite. With a command
// line ("3/7/2/") it is a batch run that ends by itself once casepost has
// ended; with none it opens the dialog on the current model.
#include <QApplication>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "app/report_command.h"
#include "platform/linux_host.h"
#include "runcontrol/run_state.h"
#include "runcontrol/startup.h"
#include "view/form2_view.h"
#include "view/screen_host.h"

namespace {

bool HasScreen() {
    const char* x = std::getenv("DISPLAY");
    const char* wayland = std::getenv("WAYLAND_DISPLAY");
    return (x && *x) || (wayland && *wayland);
}

std::string JoinArguments(int argc, char** argv) {
    std::string line;
    for (int i = 1; i < argc; ++i) {
        if (i > 1) line += ' ';
        line += argv[i];
    }
    return line;
}

// The dialog run: Form2 on the current model until it is closed. Without a
// screen there is nobody to show it to.
int RunDialog(tremodal::RunState& state, bool onScreen) {
    if (!onScreen) {
        std::fprintf(stderr,
                     "TreModal: the dialog needs a screen (DISPLAY or WAYLAND_DISPLAY) and none is "
                     "available; a batch run such as \"TreModal 1/20/\" needs none\n");
        return 2;
    }
    tremodal::Form2View form2(state);
    form2.show();
    return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::string_view(argv[1]) == "--report") return tremodal::RunReportCommand(argc, argv);
    const std::string commandLine = JoinArguments(argc, argv);

    // A batch run must work without a screen: then there is no window system
    // at all, and message boxes go to standard error. With a screen, a broken
    // one falls back to the offscreen platform, which counts as none.
    std::unique_ptr<QCoreApplication> app;
    std::unique_ptr<tremodal::LinuxHost> host;
    bool onScreen = false;
    if (HasScreen()) {
        if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "xcb;wayland;offscreen");
        app = std::make_unique<QApplication>(argc, argv);
        const QString platform = QGuiApplication::platformName();
        if (platform == "offscreen" || platform == "minimal") {
            host = std::make_unique<tremodal::LinuxHost>();
        } else {
            host = std::make_unique<tremodal::ScreenHost>();
            onScreen = true;
        }
    } else {
        app = std::make_unique<QCoreApplication>(argc, argv);
        host = std::make_unique<tremodal::LinuxHost>();
    }

    static tremodal::RunState state;
    state.Ui = host.get();

    switch (tremodal::Main(state, commandLine)) {
        case tremodal::StartOutcome::Ended:
            return 1;
        case tremodal::StartOutcome::Dialog:
            return RunDialog(state, onScreen);
        case tremodal::StartOutcome::BatchWaiting:
            break;
    }

    // The child wait: every 100 ms ask, without waiting, whether casepost has
    // ended; the batch run ends with it.
    QTimer timer1;
    timer1.setInterval(100);
    QObject::connect(&timer1, &QTimer::timeout, [&] {
        if (tremodal::Timer1_Timer(state)) QCoreApplication::exit(0);
        if (!state.Timer1Enabled) timer1.stop();
    });
    timer1.start();
    return app->exec();
}
