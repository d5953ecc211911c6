#include "runcontrol/text_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

int FilesIn(const std::string& directory) {
    int count = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(directory)) ++count;
    return count;
}

TEST(TextInput, OptionsLinesSplitIntoLabelAndNumber) {
    TempDir dir;
    WriteFile(dir.File("a.txt"),
              "Label     , 0 \r\nNext ,x\r\nMissing Mass Case (1 is active)        , 0 ,0\r\n");
    TextInput in(dir.File("a.txt"));
    EXPECT_EQ(in.ReadTextField(), "Label");
    EXPECT_EQ(in.ReadNumberField(), 0);
    EXPECT_EQ(in.ReadTextField(), "Next");
    EXPECT_EQ(in.ReadTextField(), "x");
    EXPECT_EQ(in.ReadTextField(), "Missing Mass Case (1 is active)");
    EXPECT_EQ(in.ReadNumberField(), 0);
    EXPECT_EQ(in.ReadTextField(), "0");
    EXPECT_TRUE(in.AtEnd());
    EXPECT_EQ(FailureOf([&] { in.ReadTextField(); }), 62);
    EXPECT_EQ(FailureOf([&] { in.ReadNumberField(); }), 62);
}

TEST(TextInput, TextFieldsQuotedBlankAndEmpty) {
    TempDir dir;
    WriteFile(dir.File("a.txt"), " \t\"a, b\" junk, next  \t\n   \r\n\r\nlast");
    TextInput in(dir.File("a.txt"));
    EXPECT_EQ(in.ReadTextField(), "a, b");
    EXPECT_EQ(in.ReadTextField(), "next");
    EXPECT_EQ(in.ReadTextField(), "");  // blanks alone
    EXPECT_EQ(in.ReadTextField(), "");  // an empty line
    EXPECT_EQ(in.ReadTextField(), "last");
    EXPECT_EQ(FailureOf([&] { in.ReadTextField(); }), 62);
}

TEST(TextInput, NumberFieldsSplitAtBlanksCommasAndOneLineEnd) {
    TempDir dir;
    WriteFile(dir.File("a.txt"),
              " 1             2 \r\n3,,4  5  6 \r\n7\r\n\r\n 8\n-8.5E1\rname\r\n2.5, 3.5 70000 1E39");
    TextInput in(dir.File("a.txt"));
    EXPECT_EQ(in.ReadNumberField(), 1);
    EXPECT_EQ(in.ReadNumberField(), 2);
    EXPECT_EQ(in.ReadNumberField(), 3);
    EXPECT_EQ(in.ReadNumberField(), 0);  // the empty field between two commas
    EXPECT_EQ(in.ReadNumberField(), 4);
    EXPECT_EQ(in.ReadNumberField(), 5);
    EXPECT_EQ(in.ReadNumberField(), 6);
    EXPECT_EQ(in.ReadNumberField(), 7);  // empty lines before a number are skipped
    EXPECT_EQ(in.ReadNumberField(), 8);
    EXPECT_EQ(in.ReadNumberField(), -85);
    // A CR alone ended the number's line; the next field starts on "name".
    EXPECT_EQ(in.ReadTextField(), "name");
    EXPECT_EQ(in.ReadI16Field(), 2);  // half way goes to the even integer
    EXPECT_EQ(in.ReadI32Field(), 4);
    EXPECT_EQ(FailureOf([&] { in.ReadI16Field(); }), 6);
    EXPECT_EQ(FailureOf([&] { in.ReadSingleField(); }), 6);
}

TEST(TextInput, LinesEndAtLfCrLfOrCrAndTheLastNeedsNone) {
    TempDir dir;
    // The CR LF behind the first line is split between two buffer fills.
    WriteFile(dir.File("a.txt"), std::string(65535, 'x') + "\r\na, b \nc\r\n\r\nd\re");
    TextInput in(dir.File("a.txt"));
    EXPECT_EQ(in.ReadLine(), std::string(65535, 'x'));
    EXPECT_EQ(in.ReadLine(), "a, b ");
    EXPECT_EQ(in.ReadLine(), "c");
    EXPECT_EQ(in.ReadLine(), "");
    EXPECT_EQ(in.ReadLine(), "d");
    EXPECT_EQ(in.ReadLine(), "e");
    EXPECT_EQ(FailureOf([&] { in.ReadLine(); }), 62);
}

TEST(TextInput, OpenFailsWith53WhenMissingAnd75WhenNotReadable) {
    TempDir dir;
    EXPECT_EQ(FailureOf([&] { TextInput in(dir.File("none.txt")); }), 53);
    EXPECT_EQ(FailureOf([&] { TextInput in(dir.File("none/a.txt")); }), 53);
    EXPECT_EQ(FailureOf([&] { TextInput in(dir.Path()); }), 75);
    WriteFile(dir.File("a.txt"), "1\r\n");
    if (::geteuid() != 0) {  // root reads whatever the permissions say
        ::chmod(dir.File("a.txt").c_str(), 0);
        EXPECT_EQ(FailureOf([&] { TextInput in(dir.File("a.txt")); }), 75);
        ::chmod(dir.File("a.txt").c_str(), 0644);
    }
    TextInput in(dir.File("a.txt"));
    in.Close();
    EXPECT_EQ(FailureOf([&] { in.ReadLine(); }), 52);
}

TEST(PrintFile, ItemsZonesTabsAndLineEndsGiveExactBytes) {
    TempDir dir;
    PrintFile out(dir.File("p.txt"), TextMode::Output);
    out.NextZone().Item("a");  // a leading comma: zone 2
    EXPECT_EQ(out.Column(), 16);
    out.EndLine();
    out.Item("abc").NextZone().Item("x").EndLine();
    out.Item("12345678901234").NextZone();  // exactly one zone full: on to the third
    EXPECT_EQ(out.Column(), 29);
    out.Item(" 1 ").Item("-2 ").Line("");
    out.Line("");
    EXPECT_EQ(out.Column(), 1);
    out.Item("ab").Tab(5).Item("c").Tab(6).Item("d").Tab(3).Item("e").EndLine();  // beyond 3: next line
    out.Close();
    EXPECT_EQ(ReadFile(dir.File("p.txt")), std::string(14, ' ') + "a\r\n" + "abc" + std::string(11, ' ') +
                                               "x\r\n" + "12345678901234" + std::string(14, ' ') +
                                               " 1 -2 \r\n\r\n" + "ab  cd\r\n  e\r\n");
}

TEST(PrintFile, OutputReplacesAtCloseAndAppendAddsAtTheEnd) {
    TempDir dir;
    const std::string path = dir.File("r.txt");
    WriteFile(path, "old");
    {
        PrintFile out(path, TextMode::Output);
        out.Line("lost");
    }  // no Close: a failure passed by
    EXPECT_EQ(ReadFile(path), "old");
    EXPECT_EQ(FilesIn(dir.Path()), 1);

    PrintFile out(path, TextMode::Output);
    out.Line("new");
    EXPECT_EQ(ReadFile(path), "old");
    out.Close();
    EXPECT_EQ(ReadFile(path), "new\r\n");
    EXPECT_EQ(FilesIn(dir.Path()), 1);
    EXPECT_EQ(FailureOf([&] { out.Item("x"); }), 52);

    const mode_t mask = ::umask(022);
    PrintFile fresh(dir.File("n.txt"), TextMode::Output);
    fresh.Close();
    ::umask(mask);
    struct stat info {};
    ASSERT_EQ(::stat(dir.File("n.txt").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0644u);

    for (const char* line : {"one", "two"}) {  // the first creates the file
        PrintFile log(dir.File("log.txt"), TextMode::Append);
        log.Line(line);
        log.Close();
    }
    EXPECT_EQ(ReadFile(dir.File("log.txt")), "one\r\ntwo\r\n");
}

TEST(PrintFile, FailsWith75WhenTheFileCannotBeCreated) {
    TempDir dir;
    std::filesystem::create_directory(dir.File("sub"));
    EXPECT_EQ(FailureOf([&] { PrintFile out(dir.File("sub"), TextMode::Output); }), 75);
    EXPECT_EQ(FailureOf([&] { PrintFile out(dir.File("sub"), TextMode::Append); }), 75);
    EXPECT_EQ(FailureOf([&] { PrintFile out(dir.File("none/a.txt"), TextMode::Output); }), 75);
    EXPECT_EQ(FailureOf([&] { PrintFile out(dir.File("none/a.txt"), TextMode::Append); }), 75);
    if (::geteuid() != 0) {  // root writes whatever the permissions say
        WriteFile(dir.File("ro.txt"), "kept");
        ::chmod(dir.File("ro.txt").c_str(), 0444);
        EXPECT_EQ(FailureOf([&] { PrintFile out(dir.File("ro.txt"), TextMode::Output); }), 75);
        EXPECT_EQ(ReadFile(dir.File("ro.txt")), "kept");
    }
}

}  // namespace
}  // namespace tremodal
