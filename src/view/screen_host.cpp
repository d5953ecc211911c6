#include "view/screen_host.h"

#include <QInputDialog>
#include <QMessageBox>

#include "base/vector_state.h"

namespace tremodal {

void ScreenHost::ShowMessage(const std::string& text, const std::string& title) {
    QMessageBox box(QMessageBox::NoIcon, QString::fromStdString(title), QString::fromStdString(text),
                    QMessageBox::Ok);
    box.exec();
    // A message can come up in the middle of a run.
    ClearUpperVectorState();
}

std::string ScreenHost::Prompt(const std::string& title, const std::string& question,
                               const std::string& proposed) {
    bool ok = false;
    const QString answer =
        QInputDialog::getText(nullptr, QString::fromStdString(title), QString::fromStdString(question),
                              QLineEdit::Normal, QString::fromStdString(proposed), &ok);
    return ok ? answer.toStdString() : std::string();
}

}  // namespace tremodal
