// A results case written again: the binary result files are written in place,
// so a run on a smaller model would keep the tail of the older, longer files
// unless the reset of the case removed them first. Real runs of TreModal on
// the example building, first with eight storeys, then with three; what the
// files hold is the fingerprint tests' part.
#include <gtest/gtest.h>

#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ReadFile;

TEST(CaseFiles, ARunOnASmallerModelLeavesNoTailOfTheOlderCase) {
    const testing::ExampleModel model("--directions 1 --comb SRSS --storeys 8");
    ASSERT_EQ(model.Run("1/20/").status, 0);
    // What an earlier solve left under case 20, and a case beside it.
    for (const char* suffix : {".R20", ".$20", ".#20", ".121"}) testing::WriteFile(model.File(suffix), "old");
    const std::string dir = model.dir.Path();
    ASSERT_EQ(testing::RunProgram(EXAMPLE_TOOL, dir,
                                  "'" + dir + "' --name-file --directions 1 --comb SRSS --storeys 3")
                  .status,
              0);
    ASSERT_EQ(model.Run("1/20/").status, 0);
    // One 54-byte element record per column; the index's title, date and
    // time texts, counts and zero words, then an element number per column.
    EXPECT_EQ(ReadFile(model.File(".120")).size(), 3u * 54);
    EXPECT_EQ(ReadFile(model.File(".220")).size(), 3u * 55 + 8 + 16 + 3 * 2);
    for (const char* suffix : {".R20", ".$20", ".#20"}) EXPECT_FALSE(testing::Exists(model.File(suffix)));
    EXPECT_EQ(ReadFile(model.File(".121")), "old");
}

}  // namespace
}  // namespace tremodal
