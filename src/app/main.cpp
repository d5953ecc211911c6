// TreModal: the modal response spectrum analysis of the suite. With a command
// line ("3/7/2/") it is a batch run that ends by itself once casepost has
// ended; with none it opens the dialog on the current model. A first argument
// that begins with "--" is the program's own option, never a batch run.
#include <malloc.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QTimer>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#if TREMODAL_VIEW
#include <QApplication>
#include <QGuiApplication>
#endif

#include "app/report_command.h"
#include "base/run_state.h"
#include "base/worker_threads.h"
#include "platform/linux_host.h"
#include "run/startup.h"
#if TREMODAL_VIEW
#include "view/form2_view.h"
#include "view/screen_host.h"
#endif

namespace {

const char* const kUsage =
    "Usage: TreModal OPTIONS/CASE/[PHASE/]    a batch run on the current model\n"
    "       TreModal                          the dialog on the current model (needs a screen)\n"
    "       TreModal --report N [--model PATH] [--csv DIR] [--plots DIR]\n"
    "                                         a summary of the analysis of options set N, computed\n"
    "                                         in memory; writes nothing beside the model\n"
    "       TreModal --help | -h | --version\n"
    "\n"
    "The batch command line is the one the suite's batch job files hold: fields ended by \"/\".\n"
    "  OPTIONS  the options set: the model's file <model>.USM<OPTIONS>\n"
    "  CASE     the results case (the options set's own number replaces it)\n"
    "  PHASE    missing mass: 1 writes the load cases, 2 reads the solved cases back;\n"
    "           without it (or 0) a plain run\n"
    "  TreModal 3/7/    TreModal 3/7/1/    TreModal 3/7/2/\n"
    "\n"
    "The settings file names the suite's directories; TreModal reads it and never writes it:\n"
    "  $XDG_CONFIG_HOME/VARNEK/VARNEK.conf (by default ~/.config/VARNEK/VARNEK.conf)\n"
    "  [Setup]\n"
    "  Files1=<directory of MODEL.NAM, which names the current model, and response.cnt>\n"
    "  Files2=<directory of the suite's programs casepost and VarnekEdit>\n"
    "\n"
    "A batch run writes the modal response files <model>.HS<direction>, the results case\n"
    "<model>.L<CASE> .W<CASE> .1<CASE> .2<CASE>, the load case list <model>.NSL and\n"
    "Files1/response.cnt, then starts Files2/casepost and ends with it (status 0). A run that\n"
    "fails adds one line to <model>.LOG, prints it and what went wrong on standard error, and\n"
    "ends with status 1. A mistaken option of TreModal's own ends with status 2.\n"
    "See TreModal(1).\n";

// The program's own options: --help and --version. Returns the exit status.
int RunOwnOption(int argc, char** argv) {
    const std::string option = argv[1];
    if (option == "--help" && argc == 2) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (option == "--version" && argc == 2) {
        std::printf("TreModal %d-%d-%d\n", TREMODAL_VERSION_MAJOR, TREMODAL_VERSION_MINOR,
                    TREMODAL_VERSION_PATCH);
        return 0;
    }
    if (option == "--help" || option == "--version") {
        std::fprintf(stderr, "TreModal: %s takes no arguments; see TreModal --help\n", option.c_str());
    } else {
        std::fprintf(stderr, "TreModal: unknown option %s; see TreModal --help\n", option.c_str());
    }
    return 2;
}

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
int RunDialog([[maybe_unused]] tremodal::RunState& state, bool onScreen) {
    if (!onScreen && !(!TREMODAL_VIEW && HasScreen())) {
        std::fprintf(stderr,
                     "TreModal: the dialog needs a screen (DISPLAY or WAYLAND_DISPLAY) and none is "
                     "available; a batch run such as \"TreModal 1/20/\" needs none\n");
        return 2;
    }
#if TREMODAL_VIEW
    tremodal::Form2View form2(state);
    form2.show();
    return QApplication::exec();
#else
    std::fprintf(stderr, "TreModal: the dialog needs %s beside TreModal, and it is not there\n",
                 tremodal::kViewProgram);
    return 2;
#endif
}

#if !TREMODAL_VIEW
// The windows program beside this one, or where an install puts it; empty
// when there is none.
std::string ViewProgramPath() {
    std::vector<char> self(4096);
    const ssize_t length = ::readlink("/proc/self/exe", self.data(), self.size() - 1);
    if (length <= 0) return {};
    std::string dir(self.data(), std::size_t(length));
    dir.erase(dir.rfind('/') + 1);
    for (const std::string& candidate :
         {dir + tremodal::kViewProgram, dir + "../libexec/TreModal/" + tremodal::kViewProgram}) {
        if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    }
    return {};
}

// Starts the windows program in this one's place with the same arguments.
// Returns only when it cannot be started.
void StartViewProgram(char** argv) {
    const std::string path = ViewProgramPath();
    if (path.empty()) return;
    ::execv(path.c_str(), argv);
    std::fprintf(stderr, "TreModal: %s cannot be started (%s)\n", path.c_str(), std::strerror(errno));
}

bool AsksForCharts(int argc, char** argv) {
    for (int i = 2; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--plots" || argument.starts_with("--plots=")) return true;
    }
    return false;
}
#endif

// TREMODAL_THREADS=N caps the threads a run works on (1: all on one
// thread); by default it uses every core. Anything but a whole number from
// 1 up is passed over. TREMODAL_SMALL_SHARES=1 shares out even the work of
// a small model, as tests of the threads want. The files are the same
// whatever the two say.
void ApplyThreadSetting() {
    const char* shares = std::getenv("TREMODAL_SMALL_SHARES");
    if (shares && std::string_view(shares) == "1") tremodal::SetSmallShares(true);
    const char* text = std::getenv("TREMODAL_THREADS");
    if (!text || !*text) return;
    char* end = nullptr;
    const long count = std::strtol(text, &end, 10);
    if (*end == '\0' && count >= 1) tremodal::SetWorkerThreads(int(std::min(count, 64L)));
}

}  // namespace

// The buffers of a few megabytes that a run takes and gives back in every
// direction (the response file's batches, the rows of the double sums, the
// result records) stay in the heap and are used again, rather than going
// back to the kernel and coming out fresh next time: the first touch of a
// fresh page costs more than the work done on it, the more so on a virtual
// machine. The mode shapes, larger than this, still get memory of their own.
void KeepBuffersForReuse() {
#if defined(__GLIBC__)
    mallopt(M_MMAP_THRESHOLD, 64 << 20);
    mallopt(M_TRIM_THRESHOLD, 128 << 20);
#endif
}

int main(int argc, char** argv) {
    // -h alone is --help: no options set is named "-h".
    static char help[] = "--help";
    if (argc == 2 && std::string_view(argv[1]) == "-h") argv[1] = help;
    KeepBuffersForReuse();
    ApplyThreadSetting();
#if !TREMODAL_VIEW
    // A screen, or charts to draw, want the window system: its libraries
    // are the windows program's, and a run without them starts at once.
    const bool report = argc > 1 && std::string_view(argv[1]) == "--report";
    const bool ownOption = argc > 1 && std::string_view(argv[1]).starts_with("--");
    if ((report && AsksForCharts(argc, argv)) || (!ownOption && HasScreen())) StartViewProgram(argv);
#endif
    if (argc > 1 && std::string_view(argv[1]) == "--report") return tremodal::RunReportCommand(argc, argv);
    if (argc > 1 && std::string_view(argv[1]).starts_with("--")) return RunOwnOption(argc, argv);
    const std::string commandLine = JoinArguments(argc, argv);

    // A batch run must work without a screen: then there is no window system
    // at all, and message boxes go to standard error. With a screen, a broken
    // one falls back to the offscreen platform, which counts as none.
    std::unique_ptr<QCoreApplication> app;
    std::unique_ptr<tremodal::LinuxHost> host;
    bool onScreen = false;
#if TREMODAL_VIEW
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
    }
#endif
    if (!app) {
        // No screen, or no windows program to show one: messages go to
        // standard error.
        app = std::make_unique<QCoreApplication>(argc, argv);
        host = std::make_unique<tremodal::LinuxHost>();
    }

    static tremodal::RunState state;
    state.Ui = host.get();
    // The dialog without a screen is refused before the model is looked for:
    // with or without settings, there is nobody to show it to.
    if (commandLine.empty() && !onScreen) return RunDialog(state, onScreen);

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
