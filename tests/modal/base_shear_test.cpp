// The base shear block of the report under each of the five combination
// methods, on a model small enough to combine by hand: three modes at 9, 10
// and 20 rad/s with participation factors 0.5, 0.75 and 1, and a curve that
// is negative at the periods of the two lower modes, so that the modal
// shears differ in sign. Only the dialog shows the block, so the analysis
// runs in this process with the dialog's switch on.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "input/options_file.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

// Frame nodes 2 to 4 carry x in equations 1, 3, 5 (unit masses); an x motion
// moves these by 1, so Gamma is the sum of a mode's x values. The curve (g)
// at each mode's period 6.284 / omega: 0.698 and 0.628 s lie on the -2
// plateau, 0.314 s on the +1 one.
void WriteThreeModeModel(const testing::ModelFixture& f) {
    auto c = testing::FrameFrequencyCase();
    c.Eigenvalues = {81, 100, 400};
    c.Shapes = {{0, 0.5f, 0, 0, 0, 0, 0}, {0, 0.25f, 0, 0.5f, 0, 0, 0}, {0, 0, 0, 0, 0, 1, 0}};
    testing::WriteFile(f.File(".H1"), example::FrequencyCaseBytes(c));
    testing::WriteFile(f.File(".URS1"), "0,1\r\n0.5,1\r\n0.6,-2\r\n10,-2\r\n-1\r\n");
}

// The block's total line: x only, the other two columns 0, in fields of 12.
std::string Total(const std::string& x) {
    return "Total  " + std::string(12 - x.size(), ' ') + x + "    0.000E00    0.000E00";
}

// The modal shears Gamma^2 Sd f omega^2 with Sd the curve's acceleration
// (curve factor 9.81 as a single) over omega^2: A1 = -0.25 x 2 x 9.81 =
// -4.905, A2 = -0.5625 x 2 x 9.81 = -11.03625, A3 = 9.81. SRSS: the root of
// 242.09; 9 and 10 rad/s lie within 10 % of the later one, 20 does not, so
// the grouping adds 2 x 4.905 x 11.03625; ABS is a plain sum, in which the
// two negative shears outweigh the positive one. A negative direction
// factor turns every modal shear round: the plain sum changes sign, the
// quadratic methods do not. The values of the combinations themselves are
// the double sum tests' part.
TEST(BaseShear, TheReportBlockOfEachMethod) {
    testing::ModelFixture f;
    WriteThreeModeModel(f);
    testing::InProcessRun run(f.dir.Path(), "3/7/");
    RunState& s = run.state;
    s.Options.ShowModalShear = 1, s.Options.Duration = 10;
    // clang-format off
    const struct { i16 method; f32 factor; const char* name; const char* total; } cases[] = {
        {0, 1, "SRSS", "1.556E01"}, {1, 1, "QCQ", "1.697E01"}, {2, 1, "10% Group", "1.872E01"},
        {3, 1, "DSM", "1.737E01"}, {4, 1, "ABS Sum", "-6.131E00"}, {4, -1, "ABS Sum", "6.131E00"},
        {2, -1, "10% Group", "1.872E01"}};
    // clang-format on
    for (const auto& c : cases) {
        s.Options.CombMethod = c.method, s.Options.DirFactor(1) = c.factor;
        SetCombNameFromMethod(s.Options);
        run.Analyze();
        const std::vector<std::string> block = {
            " ", "Base Shear Components due to Translational Motion  Comb-" + std::string(c.name),
            "              Fxe         Fye          Fze ", Total(c.total)};
        ASSERT_GE(s.List1.size(), block.size());
        EXPECT_EQ(std::vector<std::string>(s.List1.end() - 4, s.List1.end()), block) << c.factor;
        // The report goes into the results case as comment lines.
        EXPECT_NE(testing::ReadFile(f.File(".L20")).find("\r\nACOM," + block[3] + "\r\n"), std::string::npos);
    }
}

}  // namespace
}  // namespace tremodal
