#include "results/result_case_files.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

#include "runcontrol/file_system.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::LocalMoment;
using testing::BytesF32;
using testing::BytesI16;
using testing::Exists;
using testing::FailureOf;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;


std::string Padded(const std::string& text, std::size_t length) {
    return text + std::string(length - text.size(), ' ');
}

class ResultCaseFiles : public ::testing::Test {
protected:
    void SetUp() override {
        const std::time_t fixed = LocalMoment(2026, 3, 4, 7, 8, 9);
        SetClockSource([fixed] { return fixed; });
        s.Model.ModelPath = dir.File("FRAME");
    }
    void TearDown() override { SetClockSource(nullptr); }

    TempDir dir;
    RunState s;
};

TEST_F(ResultCaseFiles, FiveElementsListEveryElementWithZeroValues) {
    s.Model.NumElements = 5;
    s.Model.NumNodes = 6;
    s.Model.LoadCaseTitle = "SpectResp 2:FrqCase 1:Dir'n 30 Deg: Mode 3";
    WriteForceFiles(s, " 12");
    WriteCaseIndexFiles(s, " 12");

    // The case number loses its leading blanks in the names.
    EXPECT_EQ(ReadFile(dir.File("FRAME.W12")), BytesF32(5));

    const std::string forces = ReadFile(dir.File("FRAME.112"));
    ASSERT_EQ(forces.size(), 270u);
    const std::string zeros(24, '\0');
    for (int i = 1; i <= 5; ++i) {
        const std::string record = BytesI16(i16(i)) + BytesI16(i16(i)) + zeros + BytesI16(i16(i)) + zeros;
        EXPECT_EQ(forces.substr(std::size_t(i - 1) * 54, 54), record) << "record " << i;
    }

    const std::string index = ReadFile(dir.File("FRAME.212"));
    ASSERT_EQ(index.size(), 199u);
    EXPECT_EQ(index.substr(0, 55), Padded("SpectResp 2:FrqCase 1:Dir'n 30 Deg: Mode 3", 55));
    EXPECT_EQ(index.substr(55, 55), Padded("04/03/2026", 55));
    EXPECT_EQ(index.substr(110, 55), Padded("07:08:09", 55));
    EXPECT_EQ(index.substr(165, 8), BytesF32(5) + BytesF32(6));
    EXPECT_EQ(index.substr(173, 16), std::string(16, '\0'));
    EXPECT_EQ(index.substr(189), BytesI16(1) + BytesI16(2) + BytesI16(3) + BytesI16(4) + BytesI16(5));
}

TEST_F(ResultCaseFiles, NoElementsGiveTheBareFilesAndALongTitleIsCut) {
    s.Model.NumElements = 0;
    s.Model.NumNodes = 2;
    const std::string title(60, 'T');
    s.Model.LoadCaseTitle = title.substr(0, 55) + "XXXXX";
    WriteForceFiles(s, "3");
    WriteCaseIndexFiles(s, "3");
    EXPECT_EQ(ReadFile(dir.File("FRAME.W3")), BytesF32(0));
    EXPECT_TRUE(Exists(dir.File("FRAME.13")));
    EXPECT_EQ(ReadFile(dir.File("FRAME.13")), "");
    const std::string index = ReadFile(dir.File("FRAME.23"));
    ASSERT_EQ(index.size(), 189u);
    EXPECT_EQ(index.substr(0, 55), std::string(55, 'T'));
    EXPECT_EQ(index.substr(55, 1), "0");
    EXPECT_EQ(index.substr(169, 4), BytesF32(2));
}

TEST_F(ResultCaseFiles, WritesOverAnOlderFileAndKeepsItsTail) {
    // ResetCase deletes the old files in a real run; these writers do not
    // truncate, so whatever lay behind the new data stays.
    const std::string old(400, 'Z');
    WriteFile(dir.File("FRAME.W1"), old);
    WriteFile(dir.File("FRAME.11"), old);
    WriteFile(dir.File("FRAME.21"), old);
    s.Model.NumElements = 2.5f;  // rounds half to even: 2 elements
    s.Model.LoadCaseTitle = "T";
    WriteForceFiles(s, "1");
    WriteCaseIndexFiles(s, "1");

    // The single form goes into .W as it stands, not rounded.
    EXPECT_EQ(ReadFile(dir.File("FRAME.W1")), BytesF32(2.5f) + old.substr(4));
    const std::string forces = ReadFile(dir.File("FRAME.11"));
    ASSERT_EQ(forces.size(), 400u);
    EXPECT_EQ(forces.substr(54, 2), BytesI16(2));
    EXPECT_EQ(forces.substr(108), old.substr(108));
    const std::string index = ReadFile(dir.File("FRAME.21"));
    ASSERT_EQ(index.size(), 400u);
    EXPECT_EQ(index.substr(189, 4), BytesI16(1) + BytesI16(2));
    EXPECT_EQ(index.substr(193), old.substr(193));
}

TEST_F(ResultCaseFiles, ElementCountBeyondSixteenBitsIsAnOverflow) {
    s.Model.NumElements = 32768;
    EXPECT_EQ(FailureOf([&] { WriteForceFiles(s, "4"); }), 6);
    // The count file stands before the conversion fails.
    EXPECT_EQ(ReadFile(dir.File("FRAME.W4")), BytesF32(32768));
    EXPECT_FALSE(Exists(dir.File("FRAME.14")));
    EXPECT_EQ(FailureOf([&] { WriteCaseIndexFiles(s, "4"); }), 6);
}

}  // namespace
}  // namespace tremodal
