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
#include <tuple>
#include <vector>

#include "base/file_system.h"
#include "base/text_files.h"
#include "dialog/commands.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using namespace testing;

// 0 a FIFO, 1 a directory, 2 a link to /dev/zero.
constexpr int kKinds[] = {0, 1, 2};

void PutInPlace(const std::string& path, int kind) {
    std::filesystem::remove(path);
    if (kind == 0 && ::mkfifo(path.c_str(), 0644) != 0) ADD_FAILURE() << path;
    if (kind == 1) std::filesystem::create_directory(path);
    if (kind == 2) std::filesystem::create_symlink("/dev/zero", path);
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

// The model's file with `count` bytes from `at` replaced by `bytes`.
Break Splice(const std::string& suffix, std::size_t at, std::size_t count, const std::string& bytes = "") {
    return [=](const ModelFixture& f) {
        WriteFile(f.File(suffix), ReadFile(f.File(suffix)).replace(at, count, bytes));
    };
}

Break Options(const std::function<void(ResponseOptions&)>& change) {
    return [=](const ModelFixture& f) { EditOptions(f.modelPath, "3", change); };
}

Break MissingMassFrom(const std::string& start, int zpaHighestMode = 1) {
    return Options([=](ResponseOptions& o) {
        o.MissMassOn = 1;
        o.MissMassStartCase = start;
        o.ZpaHighestMode = i16(zpaHighestMode);
    });
}

Break Both(Break a, Break b) {
    return [=](const ModelFixture& f) {
        a(f);
        b(f);
    };
}

struct Row {
    Break broken;
    Outcome outcome;
    std::string commandLine = "3/7/";
};

std::vector<Row> Rows() {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const std::string analysis = "the analysis of <M>.H1 with the options <M>.USM3: ";
    const std::string size = "\"VARNEK\"\r\nFRAME\r\nt\r\nx1\r\nx2\r\nx3\r\n";
    const std::string sizeTail = "t1\r\nt2\r\nt3\r\nt4\r\nt5\r\nt6\r\nt7\r\n1\r\n";
    // A curve that cannot be read shows its message and notes what follows.
    const auto spectrum = [](const std::string& what) {
        return RanOn(
            "TREMODAL: Error in Spectrum Data\nTREMODAL note: <M>.URS1: " + what +
            "; the run goes on without the curve: every spectral value not worked out by then is 0\n");
    };
    const std::string noNumber = "TREMODAL note: <M>.USM3, line ";
    // The frame's case: a 40-byte header, 2 eigenvalues of 8 bytes, the
    // shapes of 2 modes x 4 nodes x 6 freedoms x 8 bytes = 384, the mass form
    // word: 444 bytes before the mass count, whose 6 masses end at byte 496.
    std::vector<Row> rows = {
        {[](const ModelFixture& f) { std::filesystem::remove(f.File(".H1")); },
         Told("TREMODAL - Frequency or Response Spectrum Data not Found", "<M>.H1: no such file")},
        {nullptr, Told("TREMODAL - Response Options File (8) Not Found ", "<M>.USM8: no such file"), "8/7/"},
        {Splice(".H1", 12, 496), Failed(62, 102, "<M>.H1: ends at byte 12, inside its 40-byte header")},
        {Splice(".H1", 150, 496), Failed(62, 102, "<M>.H1: ends at byte 150 where its header promises 444")},
        {Splice(".H1", 492, 4),
         Failed(62, 102, "<M>.H1: ends at byte 492 where its mass count promises 496")},
        // 2,400 modes announced and two eigenvalues there, with no zero to
        // end the list: the list alone ends at 40 + 19,200.
        {Both(Splice(".H1", 56, 440), Splice(".H1", 8, 4, std::string("\x60\x09\0\0", 4))),
         Failed(62, 102, "<M>.H1: ends at byte 56 where its header promises 19,240")},
        // Two thousand million equations in a few bytes: arrays of 80 GB.
        {Splice(".H1", 4, 4, "\xff\xff\xff\x7f"),
         Failed(7, 102,
                analysis + "out of memory: the run arrays of the frequency case would take more memory "
                           "than the machine has")},
        {Case([](FrequencyCaseData& c) { c.Masses.assign(6, 0), c.DirMass = {}; }),
         Failed(11, 102, analysis + "division by zero")},
        {Case([](FrequencyCaseData& c) { c.Eigenvalues[1] = -400; }),
         Failed(5, 102, analysis + "invalid argument: square root of -400")},
        {Case([&](FrequencyCaseData& c) { c.Shapes[0][3] = nan; }),
         Failed(6, 102, "<M>.H1: in its mode shapes, overflow: not a number stored in a single")},
        {Case([](FrequencyCaseData& c) { c.Shapes[1][2] = -std::numeric_limits<float>::infinity(); }),
         Failed(6, 102, "<M>.H1: in its mode shapes, overflow: -Inf does not fit a single")},
        // Responses are checked equation by equation, the modes in order
        // within each: equation 2 of mode 2 (0.5 x 9.81 x 3e38) comes before
        // equation 6 of mode 1 (1.5 x 9.81 x 3e38).
        {Case([](FrequencyCaseData& c) { c.Shapes[0][6] = c.Shapes[1][2] = 3e38f, c.Shapes[1][1] = 0.5f; }),
         Failed(6, 102, analysis + "overflow: 1.47150010140194E+39 does not fit a single")},
        {Case([](FrequencyCaseData& c) { c.Eigenvalues[1] = 1e80; }),
         Failed(6, 102, analysis + "overflow: 1E+80 does not fit a single")},
        // The rotation about the major wave axis multiplies the arms from the
        // datum: a height (node 3's y) that is not a number gives a
        // not-a-number to store.
        {Both(Splice(".XYZ", 2 * 14 + 6, 4, testing::BytesF32(nan)),
              Options([](ResponseOptions& o) { o.DirOn(4) = 1; })),
         Failed(6, 102, analysis + "overflow: not a number stored in a single")},
        // The missing mass report divides 1 by the ZPA period, here the
        // curve's first period of 0.
        {MissingMassFrom("10", 0), Failed(11, 102, analysis + "division by zero")},
        {MissingMassFrom("40000"), Failed(6, 102, analysis + "overflow: 40000 does not fit a 16-bit integer"),
         "3/7/1/"},
        {WriteIn("FRAME.XSZ", size.substr(0, size.size() - 4)),
         Failed(62, 0, "<M>.XSZ: ends after line 5, before all its fields are read")},
        {WriteIn("FRAME.XSZ", size + "5,0,1e40,0\r\n"),
         Failed(6, 0, "<M>.XSZ, line 7: \"1e40\" is too large for a single-precision field")},
        {WriteIn("FRAME.XSZ", size + "5,0,-5,0\r\n" + sizeTail),
         Failed(9, 34, "<M>.XSZ: the node count -5 is below 0")},
        {WriteIn("FRAME.XSZ", size + "5,0,40000,0\r\n" + sizeTail),
         Failed(6, 34, "<M>.XSZ: the node count 40000 is more than 32,767")},
        {WriteIn("FRAME.XSZ", ""), Failed(62, 0, "<M>.XSZ: is empty where fields are expected")},
        // A program in the place of the size file.
        {WriteIn("FRAME.XSZ", std::string("\x7f\x45\x4c\x46\0\0\x01\xff,,,\n\"", 13)),
         Failed(62, 0, "<M>.XSZ: ends after line 2, before all its fields are read")},
        {WriteIn("MODEL.NAM", ""),
         Failed(62, 0, "<D>/MODEL.NAM: is empty where fields are expected", "MODEL.NAM.LOG")},
        // The log goes beside the model: when that directory is missing it
        // is named last.
        {WriteIn("MODEL.NAM", "\"<D>/missing/FRAME\",FRAME\r\n"),
         {1, "",
          FailureLine(53, 0) + "\n<D>/missing/FRAME.XSZ: no such file\n"
                               "<D>/missing/FRAME.LOG: cannot be opened (No such file or directory)\n",
          false}},
        // Absurd coordinates, but no more nodes than 16 bits can number: the
        // coordinates that are missing read as 0.
        {WriteIn("FRAME.XYZ", std::string(100000, '\xff')), RanOn("")},
        {WriteIn("FRAME.URS1", "0,1\r\nten,1\r\n"),
         spectrum("ends after line 2, before all its fields are read")},
        // Notes of a run that goes on with what the engineer would not expect:
        // number fields that hold no number, modes off either end of the
        // curve (periods 0.6284 and 0.3142 s), no casepost.
        {[](const ModelFixture& f) {
             SetOptionsLine(f.File(".USM3"), "Specrum Curve Factor", "Specrum Curve Factor ,abc");
             SetOptionsLine(f.File(".USM3"), " 0.5 ", " 0.5  x");
         },
         RanOn(noNumber +
               "6, Specrum Curve Factor: \"abc\" is not a number and reads as 0: every spectral value is "
               "0\n" +
               noNumber +
               "12, direction 2 on/off: \"x\" is not a number and reads as 0: the direction is off\n")},
        {WriteIn("FRAME.URS1", "0.4,1\r\n0.5,2\r\n-1\r\n"),
         RanOn("TREMODAL note: <M>.URS1: mode 1 lies beyond the curve's last period 0.5 s and takes its last "
               "value 2\nTREMODAL note: <M>.URS1: the curve starts at period 0.4 s and does not reach mode "
               "2, of "
               "higher frequency: it takes its first value 1\n")},
        {[](const ModelFixture& f) { std::filesystem::remove_all(f.dir.File("bin")); },
         {0, "",
          "TREMODAL note: <D>/bin/casepost: no such program (Files2 in [Setup] names the folder of the "
          "suite's "
          "programs); a batch run writes its results but starts nothing to post them\n",
          false}},
    };
    // Things that are not files in the place of the suite's files, one at a
    // time. A batch run asks first whether its options file exists; the
    // damping file is optional.
    for (const int kind : kKinds) {
        const auto in = [kind](const char* name) {
            return [=](const ModelFixture& f) { PutInPlace(f.dir.File(name), kind); };
        };
        const auto fails = [](int stage, const std::string& name, const char* log = "") {
            return Failed(75, stage, "<D>/" + name + ": is not a regular file", log);
        };
        for (const Row& row : std::vector<Row>{
                 {in("MODEL.NAM"), fails(0, "MODEL.NAM", "MODEL.NAM.LOG")},
                 {in("FRAME.XSZ"), fails(0, "FRAME.XSZ")},
                 {in("FRAME.XYZ"), fails(34, "FRAME.XYZ")},
                 {in("FRAME.USM3"),
                  Told("TREMODAL - Response Options File (3) Not Found ", "<M>.USM3: no such file")},
                 {in("FRAME.H1"), fails(102, "FRAME.H1")},
                 {in("FRAME.USD1"), RanOn("")},
                 {in("FRAME.URS1"), spectrum("is not a regular file")},
                 {Both(MissingMassFrom("10"), in("FRAME.R10")),
                  RanOn("TREMODAL: Missing Mass Case 10 Results not found or invalid\n"), "3/7/2/"},
                 {in("FRAME.NSL"), fails(102, "FRAME.NSL")},
                 {in("FRAME.HS1"), fails(102, "FRAME.HS1")},
             })
            rows.push_back(row);
    }
    return rows;
}

TEST(FailureRoutes, EachBrokenInputEndsOnItsRoute) {
    for (const Row& row : Rows()) {
        for (const std::string threads : {"1", "3"}) {
            SCOPED_TRACE(row.outcome.err + " on threads " + threads);
            ModelFixture f;
            f.WriteStandInCasepost();
            f.WriteFrequencyCase();
            if (row.broken) row.broken(f);
            const std::string environment = "TREMODAL_SMALL_SHARES=1 TREMODAL_THREADS=" + threads;
            EXPECT_OUTCOME(f, f.Run(row.commandLine, {.environment = environment, .seconds = 10}),
                           row.outcome);
        }
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
    const std::string settings = config.File("VARNEK/VARNEK.conf"),
                      line = FailureLine(53, 0) + "\n" + settings;
    for (const std::string what :
         {": no such file; it must give Files1 in [Setup], the directory of MODEL.NAM\n",
          ": Files1 is missing or empty in [Setup]; it names the directory of MODEL.NAM\n"}) {
        const testing::ProgramRun run = testing::RunTreModal(cwd.Path(), "3/7/", {.config = config.Path()});
        EXPECT_EQ(std::tuple(run.status, run.out, run.err), std::tuple(1, "", line + what));
        std::filesystem::create_directories(config.File("VARNEK"));
        WriteFile(settings, "[Setup]\nFiles2=" + f.dir.File("bin") + "\n");
    }
    EXPECT_TRUE(std::filesystem::is_empty(cwd.Path()));
    EXPECT_FALSE(Exists(f.dir.File("casepost.out")));
    EXPECT_EQ(Exists(rootLog) ? ReadFile(rootLog) : "none", rootBefore);
}

// A log that is no file is left as it was, and standard error says why. The
// dialog's guards ask whether a file exists; the batch job extension file is
// read by the Batch button. Neither may take such a thing for a file.
TEST(SpecialFiles, ALogIsLeftAloneAndTheDialogsGuardsSeeNoFile) {
    // Read in this very process: an open that waits is ended by the alarm.
    ::alarm(60);
    for (const int kind : kKinds) {
        SCOPED_TRACE(kind);
        ModelFixture f;  // no frequency case: the run fails
        f.WriteStandInCasepost();
        PutInPlace(f.File(".LOG"), kind);
        const testing::ProgramRun run = f.Run("3/7/", {.seconds = 10});
        EXPECT_TRUE(run.status == 1 && run.err.find(": is not a regular file") != std::string::npos &&
                    run.err.starts_with("TREMODAL - Frequency or Response Spectrum Data not Found\n"))
            << run.err;
        struct stat info {};
        EXPECT_TRUE(::lstat(f.File(".LOG").c_str(), &info) == 0 && !S_ISREG(info.st_mode));
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
