// Every way a batch run of the real program can go wrong, each as an input
// broken and what comes of it: the status, the line in the log, standard
// error (that line, then the file and what is wrong with it) and whether
// casepost ran. Things that are not files in the place of the model's files
// (a FIFO, a directory, a link to /dev/zero) may not hang a run, feed it
// without end or be written to: each fails as the file it stands for would
// fail when it cannot be opened. Every run is killed after a few seconds, so
// that a hang fails its row instead of the whole suite.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "base/file_system.h"
#include "base/text_files.h"
#include "dialog/commands.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::EditOptions;
using testing::Exists;
using testing::Failed;
using testing::FailureLine;
using testing::FailureOf;
using testing::FrequencyCaseData;
using testing::ModelFixture;
using testing::Outcome;
using testing::RanOn;
using testing::ReadFile;
using testing::Told;
using testing::WriteFile;

enum class Kind { Fifo, Directory, DevZero };
constexpr Kind kKinds[] = {Kind::Fifo, Kind::Directory, Kind::DevZero};
const char* const kKindNames[] = {"a FIFO", "a directory", "a link to /dev/zero"};

void PutInPlace(const std::string& path, Kind kind) {
    std::filesystem::remove(path);
    if (kind == Kind::Fifo) {
        ASSERT_EQ(::mkfifo(path.c_str(), 0644), 0) << path;
    }
    if (kind == Kind::Directory) std::filesystem::create_directory(path);
    if (kind == Kind::DevZero) std::filesystem::create_symlink("/dev/zero", path);
}

using Break = std::function<void(const ModelFixture&)>;

// Writes the file, <D> standing for the model's directory.
Break WriteIn(const std::string& name, std::string bytes) {
    return [=](const ModelFixture& f) {
        std::string text = bytes;
        if (const std::size_t at = text.find("<D>"); at != std::string::npos)
            text.replace(at, 3, f.dir.Path());
        WriteFile(f.dir.File(name), text);
    };
}

// The frame's frequency case, damaged.
Break Case(const std::function<void(FrequencyCaseData&)>& damage) {
    return [=](const ModelFixture& f) {
        FrequencyCaseData c = testing::FrameFrequencyCase();
        damage(c);
        WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
    };
}

// The frame's case file cut after `bytes`, or with its bytes replaced.
Break Cut(std::size_t bytes) {
    return [=](const ModelFixture& f) { WriteFile(f.File(".H1"), ReadFile(f.File(".H1")).substr(0, bytes)); };
}

Break MissingMassFrom(const std::string& start) {
    return [=](const ModelFixture& f) {
        EditOptions(f.modelPath, "3", [&](ResponseOptions& o) {
            o.MissMassOn = 1;
            o.MissMassStartCase = start;
        });
    };
}

Break Both(Break a, Break b) {
    return [=](const ModelFixture& f) {
        a(f);
        b(f);
    };
}

struct Row {
    std::string what;
    Break broken;
    std::string commandLine;
    Outcome outcome;
};

std::vector<Row> Rows() {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::string analysis = "the analysis of <M>.H1 with the options <M>.USM3: ";
    const std::string noCase = "TREMODAL - Frequency or Response Spectrum Data not Found";
    const std::string size = "\"VARNEK\"\r\nFRAME\r\nt\r\nx1\r\nx2\r\nx3\r\n";
    const std::string sizeTail = "t1\r\nt2\r\nt3\r\nt4\r\nt5\r\nt6\r\nt7\r\n1\r\n";
    // The frame's case: a 40-byte header, 2 eigenvalues of 8 bytes, the
    // shapes of 2 modes x 4 nodes x 6 freedoms x 8 bytes = 384, the mass form
    // word: 444 bytes before the mass count, whose 6 masses end at byte 496.
    std::vector<Row> rows = {
        {"no frequency case", [](const ModelFixture& f) { std::filesystem::remove(f.File(".H1")); }, "3/7/",
         Told(noCase, "<M>.H1: no such file")},
        {"no options set 8", nullptr, "8/7/",
         Told("TREMODAL - Response Options File (8) Not Found ", "<M>.USM8: no such file")},
        {"the case cut in its header", Cut(12), "3/7/",
         Failed(62, 102, "<M>.H1: ends at byte 12, inside its 40-byte header")},
        {"the case cut in its shapes", Cut(150), "3/7/",
         Failed(62, 102, "<M>.H1: ends at byte 150 where its header promises 444")},
        {"the case cut in its masses", Cut(492), "3/7/",
         Failed(62, 102, "<M>.H1: ends at byte 492 where its mass count promises 496")},
        // 2,400 modes announced and two eigenvalues there, with no zero to
        // end the list: the list alone ends at 40 + 19,200.
        {"a mode count far beyond the file",
         [](const ModelFixture& f) {
             const std::string whole = ReadFile(f.File(".H1"));
             WriteFile(f.File(".H1"),
                       whole.substr(0, 8) + std::string("\x60\x09\0\0", 4) + whole.substr(12, 44));
         },
         "3/7/", Failed(62, 102, "<M>.H1: ends at byte 56 where its header promises 19,240")},
        // Two thousand million equations in a few bytes: arrays of 80 GB.
        {"an equation count beyond memory",
         [](const ModelFixture& f) {
             const std::string whole = ReadFile(f.File(".H1"));
             WriteFile(f.File(".H1"),
                       std::string("\x04\0\0\0\xff\xff\xff\x7f\x02\0\0\0", 12) + whole.substr(12));
         },
         "3/7/",
         Failed(7, 102,
                analysis + "out of memory: the run arrays of the frequency case would take more memory than "
                           "the machine has")},
        {"a frame without mass", Case([](FrequencyCaseData& c) {
             c.Masses.assign(6, 0);
             c.DirMass = {};
         }),
         "3/7/", Failed(11, 102, analysis + "division by zero")},
        {"a negative eigenvalue", Case([](FrequencyCaseData& c) { c.Eigenvalues[1] = -400; }), "3/7/",
         Failed(5, 102, analysis + "invalid argument: square root of -400")},
        {"a not-a-number in a mode shape", Case([&](FrequencyCaseData& c) { c.Shapes[0][3] = nan; }), "3/7/",
         Failed(6, 102, "<M>.H1: in its mode shapes, overflow: not a number stored in a single")},
        {"an infinity in a mode shape",
         Case([](FrequencyCaseData& c) { c.Shapes[1][2] = -std::numeric_limits<float>::infinity(); }), "3/7/",
         Failed(6, 102, "<M>.H1: in its mode shapes, overflow: -Inf does not fit a single")},
        {"an eigenvalue whose root no single holds",
         Case([](FrequencyCaseData& c) { c.Eigenvalues[1] = 1e80; }), "3/7/",
         Failed(6, 102, analysis + "overflow: 1E+80 does not fit a single")},
        // The rotation about the major wave axis multiplies the arms from the
        // datum: a height that is not a number gives a not-a-number to store.
        {"a not-a-number node height in a rotation",
         [&](const ModelFixture& f) {
             std::string xyz = ReadFile(f.File(".XYZ"));
             xyz.replace(2 * 14 + 6, 4, testing::BytesF32(nan));
             WriteFile(f.File(".XYZ"), xyz);
             EditOptions(f.modelPath, "3", [](ResponseOptions& o) { o.DirOn(4) = 1; });
         },
         "3/7/", Failed(6, 102, analysis + "overflow: not a number stored in a single")},
        // The missing mass report divides 1 by the ZPA period, here the
        // curve's first period of 0.
        {"a ZPA period of 0 under missing mass",
         Both(MissingMassFrom("10"),
              [](const ModelFixture& f) {
                  EditOptions(f.modelPath, "3", [](ResponseOptions& o) { o.ZpaHighestMode = 0; });
              }),
         "3/7/", Failed(11, 102, analysis + "division by zero")},
        {"a missing mass case beyond the list", MissingMassFrom("40000"), "3/7/1/",
         Failed(6, 102, analysis + "overflow: 40000 does not fit a 16-bit integer")},
        {"a size file cut after its fifth line", WriteIn("FRAME.XSZ", size.substr(0, size.size() - 4)),
         "3/7/", Failed(62, 0, "<M>.XSZ: ends after line 5, before all its fields are read")},
        {"a size field no single holds", WriteIn("FRAME.XSZ", size + "5,0,1e40,0\r\n"), "3/7/",
         Failed(6, 0, "<M>.XSZ, line 7: \"1e40\" is too large for a single-precision field")},
        {"a negative node count", WriteIn("FRAME.XSZ", size + "5,0,-5,0\r\n" + sizeTail), "3/7/",
         Failed(9, 34, "<M>.XSZ: the node count -5 is below 0")},
        {"more nodes than 16 bits number", WriteIn("FRAME.XSZ", size + "5,0,40000,0\r\n" + sizeTail), "3/7/",
         Failed(6, 34, "<M>.XSZ: the node count 40000 is more than 32,767")},
        {"an empty size file", WriteIn("FRAME.XSZ", ""), "3/7/",
         Failed(62, 0, "<M>.XSZ: is empty where fields are expected")},
        {"a program in the place of the size file",
         WriteIn("FRAME.XSZ", std::string("\x7f\x45\x4c\x46\0\0\x01\xff,,,\n\"", 13)), "3/7/",
         Failed(62, 0, "<M>.XSZ: ends after line 2, before all its fields are read")},
        {"an empty model name file",
         WriteIn("MODEL.NAM", ""),
         "3/7/",
         {1, FailureLine(62, 0), FailureLine(62, 0) + "\n<D>/MODEL.NAM: is empty where fields are expected\n",
          false, "MODEL.NAM.LOG"}},
        // The log goes beside the model: when that directory is missing it
        // is named last.
        {"a model in a directory that does not exist",
         WriteIn("MODEL.NAM", "\"<D>/missing/FRAME\",FRAME\r\n"),
         "3/7/",
         {1, "",
          FailureLine(53, 0) + "\n<D>/missing/FRAME.XSZ: no such file\n"
                               "<D>/missing/FRAME.LOG: cannot be opened (No such file or directory)\n",
          false}},
        // Absurd coordinates, but no more nodes than 16 bits can number: the
        // coordinates that are missing read as 0.
        {"absurd coordinates", WriteIn("FRAME.XYZ", std::string(100000, '\xff')), "3/7/", RanOn("")},
        {"a curve that cannot be read", WriteIn("FRAME.URS1", "0,1\r\nten,1\r\n"), "3/7/",
         RanOn("TREMODAL: Error in Spectrum Data\n")},
        {"no casepost",
         [](const ModelFixture& f) { std::filesystem::remove_all(f.dir.File("bin")); },
         "3/7/",
         {0, "", "", false}},
    };
    // The suite's files one at a time. A batch run asks first whether its
    // options file exists; the damping file is optional.
    for (std::size_t k = 0; k < 3; ++k) {
        const Kind kind = kKinds[k];
        const auto inPlace = [kind](const char* name) {
            return [=](const ModelFixture& f) { PutInPlace(f.dir.File(name), kind); };
        };
        const auto fails = [](int stage, const char* name) {
            return Failed(75, stage, std::string("<D>/") + name + ": is not a regular file");
        };
        const std::string as = std::string(" as ") + kKindNames[k];
        const std::vector<Row> special = {
            {"MODEL.NAM",
             inPlace("MODEL.NAM"),
             "3/7/",
             {1, FailureLine(75, 0), FailureLine(75, 0) + "\n<D>/MODEL.NAM: is not a regular file\n", false,
              "MODEL.NAM.LOG"}},
            {"FRAME.XSZ", inPlace("FRAME.XSZ"), "3/7/", fails(0, "FRAME.XSZ")},
            {"FRAME.XYZ", inPlace("FRAME.XYZ"), "3/7/", fails(34, "FRAME.XYZ")},
            {"FRAME.USM3", inPlace("FRAME.USM3"), "3/7/",
             Told("TREMODAL - Response Options File (3) Not Found ", "<M>.USM3: no such file")},
            {"FRAME.H1", inPlace("FRAME.H1"), "3/7/", fails(102, "FRAME.H1")},
            {"FRAME.USD1", inPlace("FRAME.USD1"), "3/7/", RanOn("")},
            {"FRAME.URS1", inPlace("FRAME.URS1"), "3/7/", RanOn("TREMODAL: Error in Spectrum Data\n")},
            {"FRAME.R10", Both(MissingMassFrom("10"), inPlace("FRAME.R10")), "3/7/2/",
             RanOn("TREMODAL: Missing Mass Case 10 Results not found or invalid\n")},
            {"FRAME.NSL", inPlace("FRAME.NSL"), "3/7/", fails(102, "FRAME.NSL")},
            {"FRAME.HS1", inPlace("FRAME.HS1"), "3/7/", fails(102, "FRAME.HS1")},
        };
        for (Row row : special) {
            row.what += as;
            rows.push_back(row);
        }
    }
    return rows;
}

TEST(FailureRoutes, EachBrokenInputEndsOnItsRoute) {
    for (const Row& row : Rows()) {
        SCOPED_TRACE(row.what);
        ModelFixture f;
        f.WriteStandInCasepost();
        f.WriteFrequencyCase();
        if (row.broken) row.broken(f);
        const testing::ProgramRun run = f.Run(row.commandLine, {.seconds = 10});
        EXPECT_OUTCOME(f, run, row.outcome);
    }
}

TEST(FailureRoutes, RunsAddUpInTheLogAndTheLoadFileComesFirst) {
    ModelFixture f;
    f.WriteStandInCasepost();
    EXPECT_EQ(f.Run("3/7/2/").status, 1);
    EXPECT_EQ(f.Run("8/7/").status, 1);
    EXPECT_EQ(ReadFile(f.File(".LOG")),
              "TREMODAL - Frequency or Response Spectrum Data not Found\r\n"
              "TREMODAL - Response Options File (8) Not Found \r\n");
    f.WriteFrequencyCase();
    MissingMassFrom("40000")(f);
    std::filesystem::remove(f.File(".LOG"));
    EXPECT_FAILURE(
        f, f.Run("3/7/1/"), 6, 102,
        "the analysis of <M>.H1 with the options <M>.USM3: overflow: 40000 does not fit a 16-bit integer");
    EXPECT_TRUE(Exists(f.File(".L40000")));
}

// Without a settings file, or without Files1 in it, there is no model and no
// log: the settings file is named, and the working directory stays empty.
TEST(FailureRoutes, WithoutSettingsNamesTheSettingsFileAndLogsNothing) {
    ModelFixture f;
    f.WriteStandInCasepost();
    f.WriteFrequencyCase();
    testing::TempDir config, cwd;
    // Whatever may stand at the root before: the run must leave it as it was,
    // also when it runs as root and could write there.
    const std::string rootLog = "/MODEL.NAM.LOG";
    const std::string rootBefore = Exists(rootLog) ? ReadFile(rootLog) : "none";
    const std::string settings = config.File("VARNEK/VARNEK.conf");
    const std::string line = FailureLine(53, 0) + "\n" + settings;
    testing::ProgramRun run = testing::RunTreModal(cwd.Path(), "3/7/", {.config = config.Path()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.err, line + ": no such file; it must give Files1 in [Setup], the directory of MODEL.NAM\n");

    std::filesystem::create_directories(config.File("VARNEK"));
    WriteFile(settings, "[Setup]\nFiles2=" + f.dir.File("bin") + "\n");
    run = testing::RunTreModal(cwd.Path(), "3/7/", {.config = config.Path()});
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(run.err,
              line + ": Files1 is missing or empty in [Setup]; it names the directory of MODEL.NAM\n");
    EXPECT_TRUE(std::filesystem::is_empty(cwd.Path()));
    EXPECT_FALSE(Exists(f.dir.File("casepost.out")));
    EXPECT_EQ(Exists(rootLog) ? ReadFile(rootLog) : "none", rootBefore);
}

TEST(SpecialFiles, ALogThatIsNoFileLeavesStandardErrorAlone) {
    for (std::size_t k = 0; k < 3; ++k) {
        SCOPED_TRACE(kKindNames[k]);
        ModelFixture f;  // no frequency case: the run fails
        f.WriteStandInCasepost();
        PutInPlace(f.File(".LOG"), kKinds[k]);
        const testing::ProgramRun run = f.Run("3/7/", {.seconds = 10});
        ASSERT_EQ(run.status, 1) << run.err;
        EXPECT_TRUE(run.err.starts_with("TREMODAL - Frequency or Response Spectrum Data not Found\n"))
            << run.err;
        EXPECT_NE(run.err.find(": is not a regular file"), std::string::npos) << run.err;
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
    for (std::size_t k = 0; k < 3; ++k) {
        SCOPED_TRACE(kKindNames[k]);
        ModelFixture f;
        PutInPlace(f.File(".URS2"), kKinds[k]);
        EXPECT_FALSE(FileExists(f.File(".URS2")));
        PutInPlace(f.File(".xbt"), kKinds[k]);
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
