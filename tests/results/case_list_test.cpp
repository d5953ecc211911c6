#include "results/case_list.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <ctime>
#include <initializer_list>
#include <string>

#include "runcontrol/file_system.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::LocalMoment;
using testing::Exists;
using testing::FailureOf;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;


// One 86-byte record: 16 flags, description 50, stamp 20.
std::string Record(std::initializer_list<int> flags, const std::string& description, const std::string& stamp) {
    std::string out(16, '\0');
    int at = 0;
    for (int flag : flags) out[at++] = static_cast<char>(flag);
    out += description + std::string(50 - description.size(), ' ');
    out += stamp + std::string(20 - stamp.size(), ' ');
    return out;
}

class CaseList : public ::testing::Test {
protected:
    void SetUp() override {
        const std::time_t fixed = LocalMoment(2026, 3, 4, 7, 8, 9);
        SetClockSource([fixed] { return fixed; });
        s.Model.ModelPath = dir.File("FRAME");
        s.Model.ModelName = "FRAME";
        s.Model.ModelTitle = "Two bay portal";
    }
    void TearDown() override { SetClockSource(nullptr); }

    TempDir dir;
    RunState s;
};

TEST_F(CaseList, ResetDeletesTheCaseFilesAndCreatesTheList) {
    for (const char* name : {"FRAME.L5", "FRAME.R5", "FRAME.$5", "FRAME.#5", "FRAME.15", "FRAME.25", "FRAME.W5",
                             "FRAME.L50", "FRAME.W"}) {
        WriteFile(dir.File(name), "old");
    }
    std::string caseNo = "  5";
    ResetCase(s, caseNo);

    // The caller's text loses its leading blanks.
    EXPECT_EQ(caseNo, "5");
    for (const char* name : {"FRAME.L5", "FRAME.R5", "FRAME.$5", "FRAME.#5", "FRAME.15", "FRAME.25", "FRAME.W5"}) {
        EXPECT_FALSE(Exists(dir.File(name))) << name;
    }
    EXPECT_TRUE(Exists(dir.File("FRAME.L50")));
    EXPECT_TRUE(Exists(dir.File("FRAME.W")));
    // Case 5 is record 6: the file grows to 6 records, all zero.
    EXPECT_EQ(ReadFile(dir.File("FRAME.NSL")), std::string(6 * 86, '\0'));

    // Case 0 has its record at byte 0 and a second reset of 5 changes nothing.
    std::string zero = "0";
    ResetCase(s, zero);
    ResetCase(s, caseNo);
    EXPECT_EQ(ReadFile(dir.File("FRAME.NSL")), std::string(6 * 86, '\0'));
}

TEST_F(CaseList, ResetClearsOnlyThreeFlagsOfItsOwnRecord) {
    const std::string before = Record({9, 1, 1, 1, 7, 8}, "Case one", "01/01/2020 10:00:00") +
                               Record({2, 1, 1, 1, 5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 6},
                                      "SpectResp 1:FrqCase 1", "02/02/2021 11:11:11") +
                               Record({1, 1}, "Case three", "03/03/2022 12:12:12");
    WriteFile(dir.File("FRAME.NSL"), before);
    std::string caseNo = "1";
    ResetCase(s, caseNo);

    std::string expected = before;
    expected[86 + 1] = expected[86 + 2] = expected[86 + 3] = '\0';
    EXPECT_EQ(ReadFile(dir.File("FRAME.NSL")), expected);
}

TEST_F(CaseList, ResetPassesOverEveryFailure) {
    WriteFile(dir.File("FRAME.Lx"), "old");
    std::string text = " x";
    EXPECT_EQ(FailureOf([&] { ResetCase(s, text); }), 0);
    // The files go, and the list is opened (created) though no record fits.
    EXPECT_FALSE(Exists(dir.File("FRAME.Lx")));
    EXPECT_EQ(ReadFile(dir.File("FRAME.NSL")), "");

    // Case 32767 has no record number that fits 16 bits; a negative case has
    // no record at all.
    std::string highest = "32767";
    std::string negative = "-2";
    EXPECT_EQ(FailureOf([&] { ResetCase(s, highest); }), 0);
    EXPECT_EQ(FailureOf([&] { ResetCase(s, negative); }), 0);
    EXPECT_EQ(ReadFile(dir.File("FRAME.NSL")), "");

    // A list that cannot be opened leaves the run going.
    TempDir other;
    s.Model.ModelPath = other.File("LOCKED");
    ASSERT_EQ(::mkdir(other.File("LOCKED.NSL").c_str(), 0700), 0);
    std::string three = "3";
    EXPECT_EQ(FailureOf([&] { ResetCase(s, three); }), 0);

    // Through the record helpers the same faults go up.
    s.Model.ModelPath = dir.File("FRAME");
    EXPECT_EQ(FailureOf([&] { ReadNslRecord(s, 32767); }), kOverflow);
    EXPECT_EQ(FailureOf([&] { NslCaseNumber("7a"); }), kTypeMismatch);
    EXPECT_EQ(NslCaseNumber(" 32766 "), 32766);
}

TEST_F(CaseList, HeaderCopiesOptionsAndReportAndMarksTheCase) {
    WriteFile(dir.File("FRAME.USM2"), "Freq Case   , 1\r\nComb method , 0\r\n  indented line  \r\n");
    s.Options.OptionsFile = dir.File("FRAME.USM2");
    const std::string title = "SpectResp 2:FrqCase 1:Dir'n 30 Deg: SRSS and a long tail";
    s.Model.LoadCaseTitle = title;
    s.List1 = {" ", "Response Spectrum Curve", "     0.100        0.5000"};
    // Case 7 already has flags of other programs, kept as they stand.
    WriteFile(dir.File("FRAME.NSL"), std::string(7 * 86, '\0') + Record({4, 0, 0, 0, 5}, "old", "old"));

    WriteCaseHeader(s, "7");

    EXPECT_EQ(ReadFile(dir.File("FRAME.L7")),
              "REFORMAT\r\n"
              "MODEL,FRAME\r\n"
              "TITLE,Two bay portal\r\n"
              "LCASE,7\r\n"
              "LDESC," + title + "\r\n"
              "LDATE,04/03/2026\r\n"
              "LTIME,07:08:09\r\n"
              "SCASE,MOTION Response Spectrum (Seismic)\r\n"
              "ACOM,\r\n"
              "ACOM, Seismic Response Spectrum Analysis\r\n"
              "ACOM,\r\n"
              "ACOM, -----------OPTIONS DATA------------------------------------\"\r\n"
              "ACOM,\r\n"
              "ACOM,Freq Case   , 1\r\n"
              "ACOM,Comb method , 0\r\n"
              "ACOM,  indented line  \r\n"
              "ACOM,\r\n"
              "ACOM,------SPECTRUM and PARTICIPATION DATA-----------------------\r\n"
              "ACOM, \r\n"
              "ACOM,Response Spectrum Curve\r\n"
              "ACOM,     0.100        0.5000\r\n"
              "ACOM,\r\n");
    // The title is cut at 50 in the record; the stamp is date, blank, time.
    EXPECT_EQ(ReadFile(dir.File("FRAME.NSL")),
              std::string(7 * 86, '\0') +
                  Record({4, 1, 1, 1, 5}, title.substr(0, 50), "04/03/2026 07:08:09"));
}

TEST_F(CaseList, HeaderFailuresGoUp) {
    s.Options.OptionsFile = dir.File("FRAME.USM9");
    WriteFile(dir.File("FRAME.L3"), "older header");
    // A missing options file: the old header stays, no record is written.
    EXPECT_EQ(FailureOf([&] { WriteCaseHeader(s, "3"); }), kFileNotFound);
    EXPECT_EQ(ReadFile(dir.File("FRAME.L3")), "older header");
    EXPECT_FALSE(Exists(dir.File("FRAME.NSL")));

    // A case text that is no number: the header is written, the record fails.
    WriteFile(dir.File("FRAME.USM9"), "x\r\n");
    EXPECT_EQ(FailureOf([&] { WriteCaseHeader(s, "A1"); }), kTypeMismatch);
    EXPECT_TRUE(Exists(dir.File("FRAME.LA1")));
}

}  // namespace
}  // namespace tremodal
