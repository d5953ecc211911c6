#include "base/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace tremodal {

namespace {

// A directory that cannot be made the working directory.
constexpr int kPathNotFound = 76;

std::function<std::time_t()>& ClockSource() {
    static std::function<std::time_t()> source;
    return source;
}

std::tm LocalTime(std::time_t moment) {
    std::tm parts{};
    if (!::localtime_r(&moment, &parts)) parts = std::tm{};
    return parts;
}

std::string Describe(const std::string& path, const char* what) {
    return path + ": " + what + " (" + std::strerror(errno) + ")";
}

[[noreturn]] void FailNotRegular(const std::string& path) {
    Fail(kPathAccessError, path + ": is not a regular file");
}

}  // namespace

bool FileExists(const std::string& path) {
    struct stat info {};
    return ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool ProgramExists(const std::string& path) {
    return FileExists(path) && ::access(path.c_str(), X_OK) == 0;
}

int OpenRegularFile(const std::string& path, int flags, unsigned mode) {
    // The name is looked at before the open, so that a device is never even
    // opened (opening some has effects of its own), and the descriptor after
    // it, in case the name changed in between. O_NONBLOCK keeps the open of a
    // FIFO from waiting: for reading it returns at once, for writing it fails
    // (ENXIO) when nobody reads.
    struct stat info {};
    if (::stat(path.c_str(), &info) == 0 && !S_ISREG(info.st_mode)) FailNotRegular(path);
    const int fd = ::open(path.c_str(), flags | O_NONBLOCK | O_CLOEXEC, static_cast<mode_t>(mode));
    if (fd < 0) return -1;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        FailNotRegular(path);
    }
    // A regular file never waits; the flag goes so that reads and writes keep
    // their ordinary meaning.
    const int status = ::fcntl(fd, F_GETFL);
    if (status >= 0) ::fcntl(fd, F_SETFL, status & ~O_NONBLOCK);
    return fd;
}

void DeleteFile(const std::string& path) {
    // unlink, not remove: remove would take an empty directory of that name too.
    if (::unlink(path.c_str()) == 0) return;
    if (errno == ENOENT) Fail(kFileNotFound, path + ": no such file");
    Fail(kPathAccessError, Describe(path, "cannot be deleted"));
}

void ChangeDirectory(const std::string& path) {
    if (::chdir(path.c_str()) != 0)
        Fail(kPathNotFound, Describe(path, "cannot be made the working directory"));
}

std::time_t CurrentTime() {
    const auto& source = ClockSource();
    return source ? source() : std::time(nullptr);
}

// An empty source puts the system clock back.
void SetClockSource(std::function<std::time_t()> source) { ClockSource() = std::move(source); }

std::string DateText(std::time_t moment) {
    const std::tm t = LocalTime(moment);
    char text[32];
    std::snprintf(text, sizeof text, "%02d/%02d/%04d", t.tm_mday, t.tm_mon + 1, t.tm_year + 1900);
    return text;
}

std::string TimeText(std::time_t moment) {
    const std::tm t = LocalTime(moment);
    char text[32];
    std::snprintf(text, sizeof text, "%02d:%02d:%02d", t.tm_hour, t.tm_min, t.tm_sec);
    return text;
}

std::string DateTimeText(std::time_t moment) { return DateText(moment) + " " + TimeText(moment); }

}  // namespace tremodal
