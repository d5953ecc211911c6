// Damping by mode as the engineer writes it in the editor, over the options'
// ratio of 0.05, for a case of 10 modes; slot 11 is the pseudo-mode's.
#include "input/modal_damping.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <string>

#include "support/test_support.h"

namespace tremodal {
namespace {

TEST(ModalDamping, PairsInAnyOrderUntilMinusOneAModeAboveTheCaseOrTheEnd) {
    // The file (nullptr: no file at all), and the modes that do not keep 0.05.
    const struct {
        const char* file;
        std::map<int, float> named;
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
        {"1,0.02,11,0.5,3,0.07\r\n", {{1, 0.02f}, {11, 0.5f}}},
        // A file that ends after a mode number keeps what came before.
        {"7 0.06 1", {{7, 0.06f}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file ? c.file : "no file");
        testing::TempDir dir;
        RunState s;
        s.Model.ModelPath = dir.File("SHEAR"), s.Options.FreqCase = " 1";
        s.Options.DampingRatio = 0.05f, s.Freq.NumModes = 10;
        s.ModalDamping.Allocate(11);
        if (c.file) testing::WriteFile(dir.File("SHEAR.USD1"), c.file);
        ReadModalDamping(s);
        for (int m = 1; m <= 11; ++m)
            EXPECT_EQ(s.ModalDamping(m), c.named.count(m) ? c.named.at(m) : m <= 10 ? 0.05f : 0.0f) << m;
    }
}

}  // namespace
}  // namespace tremodal
