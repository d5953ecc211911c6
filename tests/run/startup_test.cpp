#include "run/startup.h"

#include <gtest/gtest.h>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::FakeHost;
using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

TEST(CommandLine, FieldsEndAtSlashesAndTheRestIsDropped) {
    struct Case {
        const char* line;
        const char* options;
        const char* results;
        int phase;
    } cases[] = {
        {"3/7/2/", "3", "7", 2},
        {"3/7", "3", "", 0},
        {"3/7/", "3", "7", 0},
        {"3", "", "", 0},
        {" 3 / 7 /1/9/", " 3 ", " 7 ", 1},
        {"3/7/2.5/", "3", "7", 2},
        {"3/7/3.5/x", "3", "7", 4},
        {"3/7/abc/", "3", "7", 0},
    };
    for (const Case& c : cases) {
        RunState s;
        SplitCommandLine(s, c.line);
        EXPECT_EQ(s.Options.OptionsNumber, c.options) << c.line;
        EXPECT_EQ(s.Options.ResultsCase, c.results) << c.line;
        EXPECT_EQ(s.RunPhase, c.phase) << c.line;
    }
    RunState s;
    EXPECT_THROW(SplitCommandLine(s, "3/7/40000/"), Failure);
}

struct StartFixture {
    ModelFixture model;
    FakeHost host;
    RunState state;
    StartFixture() {
        host.Files1 = model.dir.Path();
        host.Files2 = model.dir.File("bin");
        state.Ui = &host;
        model.WriteFrequencyCase();
    }
    std::string Log() const { return ReadFile(model.File(".LOG")); }
};

TEST(Startup, BatchFailuresLeaveTheirLineInTheLog) {
    {
        StartFixture f;
        std::remove(f.model.File(".USM3").c_str());
        EXPECT_EQ(Main(f.state, "3/7/"), StartOutcome::Ended);
        EXPECT_EQ(f.Log(), "TREMODAL - Response Options File (3) Not Found \r\n");
        EXPECT_TRUE(f.host.ChildrenStarted.empty());
    }
    {
        StartFixture f;
        std::remove(f.model.File(".H1").c_str());
        EXPECT_EQ(Main(f.state, "3/7/"), StartOutcome::Ended);
        EXPECT_EQ(f.Log(), "TREMODAL - Frequency or Response Spectrum Data not Found\r\n");
        EXPECT_TRUE(f.host.ChildrenStarted.empty());
    }
    {
        // Too few fields in the size file: read past its end, at stage 0.
        StartFixture f;
        WriteFile(f.model.File(".XSZ"), "a\r\nFRAME\r\ntitle\r\n1\r\n2\r\n");
        EXPECT_EQ(Main(f.state, "3/7/"), StartOutcome::Ended);
        EXPECT_EQ(f.Log(), "TREMODAL  E 62 ; L;  0 ; Model Or Data; Error - Check; Model & Re - Run; \r\n");
    }
    {
        // More nodes than 16 bits can number: an overflow with the coordinates.
        StartFixture f;
        std::string size = ReadFile(f.model.File(".XSZ"));
        size.replace(size.find("5,0,4,0"), 7, "5,0,40000,0");
        WriteFile(f.model.File(".XSZ"), size);
        EXPECT_EQ(Main(f.state, "3/7/"), StartOutcome::Ended);
        EXPECT_EQ(f.Log(), "TREMODAL  E 6 ; L;  34 ; Model Or Data; Error - Check; Model & Re - Run; \r\n");
    }
    {
        // Runs add up in the log.
        StartFixture f;
        std::remove(f.model.File(".USM3").c_str());
        Main(f.state, "3/7/");
        RunState second;
        second.Ui = &f.host;
        Main(second, "4/7/");
        EXPECT_EQ(f.Log(),
                  "TREMODAL - Response Options File (3) Not Found \r\n"
                  "TREMODAL - Response Options File (4) Not Found \r\n");
    }
}

TEST(Startup, DamagedModelFilesEndInNumberedFailures) {
    struct Case {
        const char* file;
        std::string content;
        std::string log;  // the log file, beside the model or the name file
        const char* line;
    };
    const std::string tail = " ; Model Or Data; Error - Check; Model & Re - Run; \r\n";
    const Case cases[] = {
        {"MODEL.NAM", "", "MODEL.NAM.LOG", "TREMODAL  E 62 ; L;  0"},
        {"FRAME.XSZ", "a\r\nFRAME\r\nt\r\n1\r\n2\r\n3\r\n5,0,1e40,0\r\n", "FRAME.LOG",
         "TREMODAL  E 6 ; L;  0"},
        {"FRAME.XSZ",
         "a\r\nFRAME\r\nt\r\n1\r\n2\r\n3\r\n5,0,-5,0\r\n1\r\n2\r\n3\r\n4\r\n5\r\n6\r\n7\r\n1\r\n",
         "FRAME.LOG", "TREMODAL  E 9 ; L;  34"},
        {"FRAME.XSZ", std::string("\x7f\x45\x4c\x46\0\0\x01\xff,,,\n\"", 13), "FRAME.LOG",
         "TREMODAL  E 62 ; L;  0"},
    };
    for (const Case& c : cases) {
        StartFixture f;
        WriteFile(f.model.dir.File(c.file), c.content);
        EXPECT_EQ(Main(f.state, "3/7/"), StartOutcome::Ended) << c.line;
        EXPECT_EQ(ReadFile(f.model.dir.File(c.log)), c.line + tail);
    }
    // A size file with absurd figures but no more nodes than 16 bits can
    // number is no failure: the coordinates that are missing read as 0.
    StartFixture f;
    WriteFile(f.model.File(".XYZ"), std::string(100000, '\xff'));
    ASSERT_EQ(Main(f.state, "3/7/"), StartOutcome::BatchWaiting);
}

}  // namespace
}  // namespace tremodal
