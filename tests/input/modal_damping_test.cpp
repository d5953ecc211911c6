// Damping by mode as the engineer writes it in the editor, read by real runs
// of TreModal on the example building (10 modes, damping ratio 0.05 in the
// options) and seen where the suite picks it up: the frequency table of the
// modal response file, one (omega, damping) pair of singles per mode.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>

#include "base/binary_files.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

TEST(ModalDamping, PairsInAnyOrderUntilMinusOneAModeAboveTheCaseOrTheEnd) {
    TempDir dir;
    ASSERT_EQ(testing::RunCommand(std::string("'") + EXAMPLE_TOOL + "' '" + dir.Path() +
                                  "' --name-file --directions 1 --comb SRSS > /dev/null"),
              0);
    testing::WriteStandInCasepostIn(dir.Path());

    const struct {
        const char* file;            // nullptr: no file at all
        std::map<int, float> named;  // modes that do not keep 0.05
    } cases[] = {
        {nullptr, {}},
        {"", {}},
        // Any order, the last mode of the case first, no closing -1.
        {"10,0.09\r\n3,0.07\r\n1 0.02\r\n", {{1, 0.02f}, {3, 0.07f}, {10, 0.09f}}},
        // The last mode named last, and on the file's last line.
        {"4,0.03\r\n10,0.08", {{4, 0.03f}, {10, 0.08f}}},
        // The last value for a mode counts; 0 and negative ratios give the
        // options' ratio; -1 ends the list.
        {"2,0.03\r\n2,0.04\r\n4,0\r\n5,-0.2\r\n-1\r\n6,0.08\r\n", {{2, 0.04f}}},
        // A mode above the case's 10 ends the list, its own value read.
        {"1,0.02,11,0.5,3,0.07\r\n", {{1, 0.02f}}},
        // A file that ends after a mode number keeps what came before.
        {"7 0.06 1", {{7, 0.06f}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file ? c.file : "no file");
        std::remove(dir.File("SHEAR.USD1").c_str());
        if (c.file) WriteFile(dir.File("SHEAR.USD1"), c.file);
        ASSERT_EQ(testing::RunTreModalIn(dir.Path(), "1/20/"), 0);
        const std::string bytes = ReadFile(dir.File("SHEAR.HS1"));
        ASSERT_GE(bytes.size(), 16u + 10 * 8);
        const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
        ASSERT_EQ(GetI32(at + 6), 10);
        EXPECT_EQ(GetF32(at + 10), 0.05f);  // the options' ratio in the header
        for (int m = 1; m <= 10; ++m) {
            const float expected = c.named.count(m) ? c.named.at(m) : 0.05f;
            EXPECT_EQ(GetF32(at + 16 + 8 * (m - 1) + 4), expected) << "mode " << m;
        }
    }
}

}  // namespace
}  // namespace tremodal
