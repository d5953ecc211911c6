// Numeric faults of a batch run end it with the failure's number in the
// model's log: a root of a negative value is an invalid argument (5), a value
// that no single can hold, an infinity or a not-a-number alike, is an
// overflow (6), and a division by zero is 11.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <limits>
#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

std::string LogLine(int number) {
    return "TREMODAL  E " + std::to_string(number) +
           " ; L;  102 ; Model Or Data; Error - Check; Model & Re - Run; \r\n";
}

TEST(NumericFailure, TheLogNamesTheFaultByItsNumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const struct {
        const char* what;
        std::function<void(const ModelFixture&, testing::FrequencyCaseData&)> damage;
        int number;
    } cases[] = {
        {"a negative eigenvalue: the root of the frequency",
         [](const ModelFixture&, testing::FrequencyCaseData& c) { c.Eigenvalues[1] = -400; }, 5},
        {"a not-a-number in a mode shape",
         [&](const ModelFixture&, testing::FrequencyCaseData& c) { c.Shapes[0][3] = nan; }, 6},
        {"an infinity in a mode shape",
         [&](const ModelFixture&, testing::FrequencyCaseData& c) { c.Shapes[1][2] = -infinity; }, 6},
        {"an eigenvalue whose root is too large for a single",
         [](const ModelFixture&, testing::FrequencyCaseData& c) { c.Eigenvalues[1] = 1e80; }, 6},
        // The rotation about the major wave axis multiplies the arms from the
        // datum: a height that is not a number gives a not-a-number to store.
        {"a not-a-number node height in a rotation",
         [&](const ModelFixture& f, testing::FrequencyCaseData&) {
             std::string xyz = ReadFile(f.File(".XYZ"));
             xyz.replace(2 * 14 + 6, 4, testing::BytesF32(nan));
             WriteFile(f.File(".XYZ"), xyz);
             std::string options = ReadFile(f.File(".USM3"));
             options.replace(options.find(" 0.0014875     0 "), 17, " 0.0014875     1 ");
             WriteFile(f.File(".USM3"), options);
         },
         6},
        // The missing mass report divides 1 by the ZPA period, here the
        // curve's first period of 0.
        {"a ZPA period of 0 under missing mass",
         [](const ModelFixture& f, testing::FrequencyCaseData&) {
             testing::SetOptionsLine(f.File(".USM3"), "ZPZ Option",
                                     "ZPZ Option (1 is higest mode)          , 0 ");
             testing::SetOptionsLine(f.File(".USM3"), "Missing Mass Case",
                                     "Missing Mass Case (1 is active)        , 1 ,10");
         },
         11},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ModelFixture f;
        f.WriteStandInCasepost();
        testing::FrequencyCaseData data = testing::FrameFrequencyCase();
        c.damage(f, data);
        WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(data));
        EXPECT_EQ(f.RunTreModal("3/7/"), 1);
        EXPECT_EQ(ReadFile(f.File(".LOG")), LogLine(c.number));
        EXPECT_FALSE(testing::Exists(f.dir.File("casepost.out")));
    }
}

}  // namespace
}  // namespace tremodal
