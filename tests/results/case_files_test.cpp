// A results case written again: the binary result files are written in place,
// so a run on a smaller model would keep the tail of the older, longer files
// unless the reset of the case removed them first. Real runs of TreModal on
// the example building, first with eight storeys, then with three.
#include <gtest/gtest.h>

#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::BytesF32;
using testing::BytesI16;
using testing::Exists;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

void WriteBuilding(const TempDir& dir, int storeys) {
    ASSERT_EQ(testing::RunCommand(std::string("'") + EXAMPLE_TOOL + "' '" + dir.Path() +
                                  "' --name-file --directions 1 --comb SRSS --storeys " +
                                  std::to_string(storeys) + " > /dev/null"),
              0);
}

TEST(CaseFiles, ARunOnASmallerModelLeavesNoTailOfTheOlderCase) {
    TempDir dir;
    testing::WriteStandInCasepostIn(dir.Path());
    WriteBuilding(dir, 8);
    ASSERT_EQ(testing::RunTreModalIn(dir.Path(), "1/20/"), 0);
    // One 54-byte record per column, one column per storey.
    EXPECT_EQ(ReadFile(dir.File("SHEAR.120")).size(), 8u * 54);
    EXPECT_EQ(ReadFile(dir.File("SHEAR.220")).size(), 3u * 55 + 8 + 16 + 8 * 2);

    // What an earlier solve left under case 20, and a case beside it.
    for (const char* suffix : {".R20", ".$20", ".#20", ".121"})
        WriteFile(dir.File(std::string("SHEAR") + suffix), "old");
    WriteBuilding(dir, 3);
    ASSERT_EQ(testing::RunTreModalIn(dir.Path(), "1/20/"), 0);

    // Element e: its number, six zero forces, its number again... as the
    // records of three columns alone.
    std::string forces;
    for (std::int16_t e = 1; e <= 3; ++e) {
        forces += BytesI16(e) + BytesI16(e) + std::string(24, '\0') + BytesI16(e) + std::string(24, '\0');
    }
    ASSERT_EQ(ReadFile(dir.File("SHEAR.120")).size(), 3u * 54);
    EXPECT_EQ(ReadFile(dir.File("SHEAR.120")), forces);
    // Title, date and time texts, the element and node counts, four zero
    // words, then the element numbers 1 to 3 closing the file.
    const std::string index = ReadFile(dir.File("SHEAR.220"));
    ASSERT_EQ(index.size(), 3u * 55 + 8 + 16 + 3 * 2);
    EXPECT_EQ(index.substr(165, 8), BytesF32(3) + BytesF32(4));
    EXPECT_EQ(index.substr(189), BytesI16(1) + BytesI16(2) + BytesI16(3));
    EXPECT_EQ(ReadFile(dir.File("SHEAR.W20")), BytesF32(3));
    for (const char* suffix : {".R20", ".$20", ".#20"}) {
        EXPECT_FALSE(Exists(dir.File(std::string("SHEAR") + suffix))) << suffix;
    }
    EXPECT_EQ(ReadFile(dir.File("SHEAR.121")), "old");
}

}  // namespace
}  // namespace tremodal
