#include "platform/linux_host.h"

#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <QSettings>
#include <QStandardPaths>
#include <QString>
#include <cstdio>

extern char** environ;

namespace tremodal {

namespace {

// QSettings opens the user's settings files with a plain open, which waits
// for ever on a FIFO, and would read a device without end. A settings file
// of the user's that is not a regular file counts as missing: nothing of the
// store is read at all.
bool UserSettingsAreFiles(const QString& application) {
    const QString dir = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    for (const QString& path :
         {dir + "/" + application + "/" + application + ".conf", dir + "/" + application + ".conf"}) {
        struct stat info {};
        if (::stat(path.toLocal8Bit().constData(), &info) == 0 && !S_ISREG(info.st_mode)) return false;
    }
    return true;
}

}  // namespace

LinuxHost::~LinuxHost() {
    // A child still running is left to run; only its zombie is not ours to
    // collect once we are gone.
}

std::string LinuxHost::ReadSetting(const std::string& application, const std::string& section,
                                   const std::string& key) {
    const QString app = QString::fromStdString(application);
    if (!UserSettingsAreFiles(app)) return "";
    QSettings settings(app, app);
    const QVariant value = settings.value(QString::fromStdString(section + "/" + key));
    // QSettings turns an unquoted value with commas into a list: join it back.
    if (value.typeId() == QMetaType::QStringList) return value.toStringList().join(",").toStdString();
    return value.toString().toStdString();
}

std::string LinuxHost::SettingsLocation(const std::string& application) {
    const QString app = QString::fromStdString(application);
    return QSettings(app, app).fileName().toStdString();
}

void LinuxHost::ShowMessage(const std::string& text, const std::string&) {
    std::fprintf(stderr, "TREMODAL: %s\n", text.c_str());
    std::fflush(stderr);
}

std::string LinuxHost::Prompt(const std::string&, const std::string& question, const std::string&) {
    std::fprintf(stderr, "TREMODAL: %s (no screen to answer on: cancelled)\n", question.c_str());
    return "";
}

void LinuxHost::StartChild(const std::string& program) {
    // Started directly, never through a shell, with no arguments; it inherits
    // the environment and the working directory. A new start replaces the
    // child that the wait follows.
    child_ = -1;
    pid_t pid = -1;
    char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
    if (posix_spawn(&pid, program.c_str(), nullptr, nullptr, argv, environ) == 0) child_ = pid;
}

ChildState LinuxHost::PollChild() {
    if (child_ <= 0) return ChildState::Ended;
    int status = 0;
    const pid_t r = waitpid(child_, &status, WNOHANG);
    if (r == 0) return ChildState::Running;
    child_ = -1;
    return ChildState::Ended;
}

}  // namespace tremodal
