// Things that are not files in the place of the model's files: a FIFO, a
// directory, a link to /dev/zero. None of them may hang a run, feed it
// without end or be written to; each fails as the file it stands for would
// fail when it cannot be opened. Every run is killed after a few seconds, so
// that a hang fails its test instead of the whole suite.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "base/file_system.h"
#include "base/text_files.h"
#include "dialog/commands.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::FailureOf;
using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

enum class Kind { Fifo, Directory, DevZero };

const char* Name(Kind kind) {
    switch (kind) {
        case Kind::Fifo:
            return "a FIFO";
        case Kind::Directory:
            return "a directory";
        case Kind::DevZero:
            return "a link to /dev/zero";
    }
    return "";
}

void PutInPlace(const std::string& path, Kind kind) {
    std::filesystem::remove(path);
    switch (kind) {
        case Kind::Fifo:
            ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0) << path;
            break;
        case Kind::Directory:
            std::filesystem::create_directory(path);
            break;
        case Kind::DevZero:
            std::filesystem::create_symlink("/dev/zero", path);
            break;
    }
}

constexpr Kind kKinds[] = {Kind::Fifo, Kind::Directory, Kind::DevZero};

std::string GenericLine(int stage) {
    return "TREMODAL  E 75 ; L;  " + std::to_string(stage) +
           " ; Model Or Data; Error - Check; Model & Re - Run; ";
}

// The suite's files one at a time. The log is the model's unless the model
// name file itself is the one that fails.
struct Row {
    const char* file;         // in the model's directory
    const char* commandLine;  // "3/7/2/" for the second missing mass pass
    int status;
    const char* log;   // the file the failure line goes to, "" for none
    std::string line;  // the failure line, or what a message box says
};

TEST(SpecialFiles, InPlaceOfAnyInputTheRunFailsOnThatFilesRoute) {
    const std::string optionsMissing = "TREMODAL - Response Options File (3) Not Found ";
    const Row rows[] = {
        {"MODEL.NAM", "3/7/", 1, "MODEL.NAM.LOG", GenericLine(0)},
        {"FRAME.XSZ", "3/7/", 1, "FRAME.LOG", GenericLine(0)},
        {"FRAME.XYZ", "3/7/", 1, "FRAME.LOG", GenericLine(34)},
        // A batch run asks first whether its options file exists.
        {"FRAME.USM3", "3/7/", 1, "FRAME.LOG", optionsMissing},
        {"FRAME.H1", "3/7/", 1, "FRAME.LOG", GenericLine(102)},
        // The damping file is optional: without it every mode has the ratio.
        {"FRAME.USD1", "3/7/", 0, "", ""},
        {"FRAME.URS1", "3/7/", 0, "", "TREMODAL: Error in Spectrum Data"},
        {"FRAME.R10", "3/7/2/", 0, "", "TREMODAL: Missing Mass Case 10 Results not found or invalid"},
        {"FRAME.NSL", "3/7/", 1, "FRAME.LOG", GenericLine(102)},
        {"FRAME.HS1", "3/7/", 1, "FRAME.LOG", GenericLine(102)},
    };
    for (const Row& row : rows) {
        for (Kind kind : kKinds) {
            SCOPED_TRACE(std::string(row.file) + " as " + Name(kind));
            ModelFixture f;
            f.WriteStandInCasepost();
            f.WriteFrequencyCase();
            if (std::string(row.commandLine) == "3/7/2/") {
                std::string options = ReadFile(f.File(".USM3"));
                const std::string off = "(1 is active)        , 0 ,0";
                options.replace(options.find(off), off.size(), "(1 is active)        , 1 ,10");
                WriteFile(f.File(".USM3"), options);
            }
            PutInPlace(f.dir.File(row.file), kind);

            ASSERT_EQ(f.RunTreModal(row.commandLine, 10), row.status) << f.Stderr();
            const std::string err = f.Stderr();
            if (*row.log) {
                EXPECT_EQ(ReadFile(f.dir.File(row.log)), row.line + "\r\n");
                EXPECT_EQ(err.find(row.line + "\n"), 0u) << err;
                EXPECT_FALSE(Exists(f.dir.File("casepost.out")));
            } else {
                EXPECT_FALSE(Exists(f.File(".LOG")));
                EXPECT_EQ(err, row.line.empty() ? "" : row.line + "\n");
                EXPECT_TRUE(Exists(f.dir.File("casepost.out")));
            }
        }
    }
}

TEST(SpecialFiles, ALogThatIsNoFileLeavesStandardErrorAlone) {
    const std::string line = "TREMODAL - Frequency or Response Spectrum Data not Found";
    for (Kind kind : kKinds) {
        SCOPED_TRACE(Name(kind));
        ModelFixture f;  // no frequency case: the run fails
        f.WriteStandInCasepost();
        PutInPlace(f.File(".LOG"), kind);
        ASSERT_EQ(f.RunTreModal("3/7/", 10), 1) << f.Stderr();
        EXPECT_EQ(f.Stderr().find(line + "\n"), 0u) << f.Stderr();
        EXPECT_NE(f.Stderr().find(": is not a regular file"), std::string::npos) << f.Stderr();
        // Left as it was: not replaced by a file.
        struct stat info {};
        ASSERT_EQ(::lstat(f.File(".LOG").c_str(), &info), 0);
        EXPECT_FALSE(S_ISREG(info.st_mode));
    }
}

// The dialog's guards ask whether a file exists; the batch job extension
// file is read by the Batch button. Neither may take such a thing for a file.
TEST(SpecialFiles, TheDialogsGuardsSeeNoFileAndTheJobExtensionFails) {
    // Read in this very process: an open that waits is ended by the alarm.
    ::alarm(10);
    for (Kind kind : kKinds) {
        SCOPED_TRACE(Name(kind));
        ModelFixture f;
        PutInPlace(f.File(".URS2"), kind);
        EXPECT_FALSE(FileExists(f.File(".URS2")));
        PutInPlace(f.File(".xbt"), kind);
        RunState state;
        state.Model.ModelPath = f.modelPath;
        EXPECT_EQ(FailureOf([&] { BatchJobFile(state); }), 75);
    }
    ::alarm(0);
}

// A text with neither comma nor line end is read up to a mebibyte; beyond
// that it is no file of the suite and fails as memory that cannot be given.
TEST(SpecialFiles, NoFieldOrLineGrowsWithoutBound) {
    testing::TempDir dir;
    const std::string path = dir.File("long.txt");
    const std::size_t longest = 1024 * 1024;
    WriteFile(path, std::string(longest, 'x') + "\r\n" + std::string(longest + 1, 'y'));
    TextInput in(path);
    EXPECT_EQ(in.ReadLine().size(), longest);
    EXPECT_EQ(FailureOf([&] { in.ReadLine(); }), 7);
    for (const std::string& text : {std::string(longest + 1, '7'), "\"" + std::string(longest + 1, 'q')}) {
        WriteFile(path, text);
        TextInput number(path);
        EXPECT_EQ(FailureOf([&] { number.ReadNumberField(); }), 7);
        TextInput field(path);
        EXPECT_EQ(FailureOf([&] { field.ReadTextField(); }), 7);
    }
}

}  // namespace
}  // namespace tremodal
