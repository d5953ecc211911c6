#include "runcontrol/file_system.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::LocalMoment;
using testing::FailureOf;

using testing::Exists;
using testing::TempDir;
using testing::WriteFile;


TEST(FileSystem, OnlyRegularFilesExist) {
    TempDir dir;
    WriteFile(dir.File("a.txt"), "");
    EXPECT_TRUE(FileExists(dir.File("a.txt")));
    EXPECT_FALSE(FileExists(dir.File("b.txt")));
    EXPECT_FALSE(FileExists(dir.Path()));
    EXPECT_FALSE(FileExists(""));
}

TEST(FileSystem, DeleteFailsWith53WhenMissingAnd75WhenNotAFile) {
    TempDir dir;
    WriteFile(dir.File("a.txt"), "x");
    DeleteFile(dir.File("a.txt"));
    EXPECT_FALSE(Exists(dir.File("a.txt")));
    EXPECT_EQ(FailureOf([&] { DeleteFile(dir.File("a.txt")); }), 53);
    std::filesystem::create_directory(dir.File("sub"));
    EXPECT_EQ(FailureOf([&] { DeleteFile(dir.File("sub")); }), 75);
    EXPECT_TRUE(Exists(dir.File("sub")));
}

TEST(FileSystem, ChangeDirectoryFailsWith76) {
    TempDir dir;
    const auto before = std::filesystem::current_path();
    ChangeDirectory(dir.Path());
    EXPECT_EQ(std::filesystem::current_path(), std::filesystem::canonical(dir.Path()));
    std::filesystem::current_path(before);
    EXPECT_EQ(FailureOf([&] { ChangeDirectory(dir.File("none")); }), 76);
    WriteFile(dir.File("a.txt"), "");
    EXPECT_EQ(FailureOf([&] { ChangeDirectory(dir.File("a.txt")); }), 76);
    EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST(FileSystem, DateAndTimeTextsHaveTwoDigitFields) {
    const std::time_t morning = LocalMoment(2026, 11, 7, 9, 5, 3);
    EXPECT_EQ(DateText(morning), "07/11/2026");
    EXPECT_EQ(TimeText(morning), "09:05:03");
    EXPECT_EQ(DateTimeText(morning), "07/11/2026 09:05:03");
    const std::time_t late = LocalMoment(2027, 2, 28, 23, 59, 59);
    EXPECT_EQ(DateTimeText(late), "28/02/2027 23:59:59");
    EXPECT_EQ(DateTimeText(late + 1), "01/03/2027 00:00:00");
}

TEST(FileSystem, ClockSourceReplacesTheSystemClock) {
    const std::time_t fixed = LocalMoment(2026, 11, 17, 14, 30, 0);
    SetClockSource([fixed] { return fixed; });
    EXPECT_EQ(CurrentTime(), fixed);
    EXPECT_EQ(DateText(CurrentTime()), "17/11/2026");
    SetClockSource(nullptr);
    const std::time_t now = std::time(nullptr);
    EXPECT_LE(std::abs(static_cast<long long>(CurrentTime() - now)), 2);
}

}  // namespace
}  // namespace tremodal
