// The base shear block of the report under each of the five combination
// methods, on a model small enough to combine by hand: three modes at 9, 10
// and 20 rad/s with participation factors 0.5, 0.75 and 1, and a curve that
// is negative at the periods of the two lower modes, so that the modal
// shears differ in sign. Only the dialog shows the block, so the analysis
// runs in this process with the dialog's switch on.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "input/options_file.h"
#include "support/closed_form.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ExponentText;

// Frame nodes 2 to 4 carry x in equations 1, 3, 5 (unit masses); an x motion
// moves these by 1, so Gamma is the sum of a mode's x values. The curve (g)
// at each mode's period 6.284 / omega: 0.698 and 0.628 s lie on the -2
// plateau, 0.314 s on the +1 one.
void WriteThreeModeModel(const testing::ModelFixture& f) {
    testing::FrequencyCaseData c = testing::FrameFrequencyCase();
    c.Eigenvalues = {81, 100, 400};
    c.Shapes = {{0, 0.5f, 0, 0, 0, 0, 0}, {0, 0.25f, 0, 0.5f, 0, 0, 0}, {0, 0, 0, 0, 0, 1, 0}};
    testing::WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
    testing::WriteFile(f.File(".URS1"), "0,1\r\n0.5,1\r\n0.6,-2\r\n10,-2\r\n-1\r\n");
}

// Modal base shears Gamma^2 Sd f omega^2, Sd being the curve's acceleration
// (curve factor 9.81 as a single) over omega^2, kept as a single.
closed_form::ModalShears Shears(double f) {
    const double gamma[] = {0.5, 0.75, 1}, curve[] = {-2, -2, 1};
    closed_form::ModalShears m{{}, {9, 10, 20}, {0.05, 0.05, 0.05}};
    for (int k = 0; k < 3; ++k) {
        const double w2 = m.Omega[k] * m.Omega[k];
        m.A.push_back(gamma[k] * gamma[k] * float(double(9.81f) * curve[k] / w2) * f * w2);
    }
    return m;
}

std::string Field(const std::string& text) { return std::string(12 - text.size(), ' ') + text; }

// The block's total line: x only, the other two columns 0.
std::string Total(const std::string& x) {
    return "Total  " + Field(x) + Field("0.000E00") + Field("0.000E00");
}

TEST(BaseShear, EachMethodCombinesTheModalShearsAsWorkedOutByHand) {
    testing::ModelFixture f;
    WriteThreeModeModel(f);
    testing::InProcessRun run(f.dir.Path(), "3/7/");
    RunState& s = run.state;
    s.Options.ShowModalShear = 1;

    // A1 = -0.25 x 2 x 9.81 = -4.905, A2 = -0.5625 x 2 x 9.81 = -11.03625,
    // A3 = 9.81; 9 and 10 rad/s lie within 10 % of the later one, 20 does not.
    const closed_form::ModalShears a = Shears(1);
    const struct {
        i16 method;
        f32 duration;
        const char* name;
        double figure;
        const char* byHand;
    } cases[] = {
        {0, 10, "SRSS", std::sqrt(closed_form::SrssSum(a)), "1.556E01"},
        {1, 10, "QCQ", std::sqrt(closed_form::CqcSum(a)), "1.697E01"},
        {2, 10, "10% Group", std::sqrt(closed_form::TenPercentSum(a)), "1.872E01"},
        {3, 10, "DSM", std::sqrt(closed_form::DsmSum(a, 10)), "1.737E01"},
        // A duration of 0 stands for 10 s.
        {3, 0, "DSM", std::sqrt(closed_form::DsmSum(a, 10)), "1.737E01"},
        // A plain sum: the two negative shears outweigh the positive one.
        {4, 10, "ABS Sum", closed_form::AbsSum(a), "-6.131E00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(ExponentText(c.figure), c.byHand);
        s.Options.CombMethod = c.method;
        s.Options.Duration = c.duration;
        SetCombNameFromMethod(s.Options);
        run.Analyze();
        const double shear = c.method == 4 ? s.BaseShear(1) : std::sqrt(double(s.BaseShear(1)));
        EXPECT_NEAR(shear, c.figure, 2e-6 * std::fabs(c.figure));
        const std::vector<std::string> block = {
            " ", "Base Shear Components due to Translational Motion  Comb-" + std::string(c.name),
            "              Fxe         Fye          Fze ", Total(c.byHand)};
        ASSERT_GE(s.List1.size(), block.size());
        EXPECT_EQ(std::vector<std::string>(s.List1.end() - 4, s.List1.end()), block);
        // The report goes into the results case as comment lines.
        EXPECT_NE(testing::ReadFile(f.File(".L20")).find("\r\nACOM," + block[3] + "\r\n"), std::string::npos);
    }

    // A negative direction factor turns every modal shear round: the plain
    // sum changes sign, the quadratic methods do not.
    s.Options.DirFactor(1) = -1;
    s.Options.CombMethod = 4;
    run.Analyze();
    EXPECT_EQ(s.List1.back(), Total("6.131E00"));
    s.Options.CombMethod = 2;
    run.Analyze();
    EXPECT_EQ(s.List1.back(), Total("1.872E01"));
}

}  // namespace
}  // namespace tremodal
