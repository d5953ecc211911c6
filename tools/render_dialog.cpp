// render_dialog: draws the dialog on the current model without a screen and
// saves two pictures in OUTDIR: form2-fresh.png, the form as it opens, and
// form2-viewer.png, the form after Open Options and Execute(Partial), with
// the report viewer over the controls. Every prompt is answered as if OK
// were pressed on what it proposes ("1" where it proposes nothing). The
// settings are read as TreModal reads them; run it with
// QT_QPA_PLATFORM=offscreen.
//
// Usage: render_dialog OUTDIR
#include <qtestsupport_widgets.h>

#include <QApplication>
#include <QPushButton>
#include <cstdio>
#include <string>

#include "platform/linux_host.h"
#include "run/startup.h"
#include "view/form2_view.h"

namespace {

class OkHost : public tremodal::LinuxHost {
public:
    std::string Prompt(const std::string&, const std::string&, const std::string& proposed) override {
        return proposed.empty() ? "1" : proposed;
    }
};

bool Save(QWidget& form, const QString& path) {
    QApplication::processEvents();
    if (form.grab().save(path)) {
        std::printf("%s\n", qPrintable(path));
        return true;
    }
    std::fprintf(stderr, "render_dialog: cannot write %s\n", qPrintable(path));
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: render_dialog OUTDIR\n");
        return 2;
    }
    QApplication app(argc, argv);
    const QString out = QString::fromLocal8Bit(argv[1]);
    OkHost host;
    static tremodal::RunState state;
    state.Ui = &host;
    if (tremodal::Main(state, "") != tremodal::StartOutcome::Dialog) return 1;

    tremodal::Form2View form(state);
    form.show();
    // The form is drawn as the user first sees it, active with the focus in the
    // frequency case field: the screen activates it only a moment after the
    // show, and the pictures would otherwise differ from run to run. A cursor
    // that does not blink is drawn the same however long the run takes.
    QApplication::setCursorFlashTime(0);
    form.activateWindow();
    if (!QTest::qWaitForWindowActive(&form, 60000)) {
        std::fprintf(stderr, "render_dialog: the form's window did not become active\n");
        return 1;
    }
    if (!Save(form, out + "/form2-fresh.png")) return 1;
    form.findChild<QPushButton*>("Command5_0")->click();
    form.findChild<QPushButton*>("Command1_2")->click();
    return Save(form, out + "/form2-viewer.png") ? 0 : 1;
}
