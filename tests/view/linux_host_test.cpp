// The Linux side of the machine: the user settings store read through Qt.
#include "platform/linux_host.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <cstdlib>
#include <filesystem>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::TempDir;
using testing::WriteFile;

// A settings file that is a FIFO would hold the read at its open until
// somebody writes to it; a directory or a FIFO in its place is no settings
// file, and the store reads as empty.
TEST(LinuxHost, SettingsThatAreNoFileReadAsEmpty) {
    TempDir dir;
    ::setenv("XDG_CONFIG_HOME", dir.Path().c_str(), 1);
    std::filesystem::create_directories(dir.File("VARNEK"));
    const std::string settings = dir.File("VARNEK/VARNEK.conf");
    WriteFile(settings, "[Setup]\nFiles1=/models\n");
    LinuxHost host;
    EXPECT_EQ(host.ReadSetting("VARNEK", "Setup", "Files1"), "/models");

    ::alarm(10);  // a read that waits ends the test here
    std::filesystem::remove(settings);
    ASSERT_EQ(::mkfifo(settings.c_str(), 0644), 0);
    EXPECT_EQ(host.ReadSetting("VARNEK", "Setup", "Files1"), "");
    std::filesystem::remove(settings);
    ASSERT_EQ(::mkfifo(dir.File("VARNEK.conf").c_str(), 0644), 0);
    EXPECT_EQ(host.ReadSetting("VARNEK", "Setup", "Files1"), "");
    ::alarm(0);
    ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace tremodal

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
