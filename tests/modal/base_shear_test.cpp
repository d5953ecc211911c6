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
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ExponentText;
using testing::InProcessRun;
using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

constexpr int kModes = 3;
const double kOmega[kModes] = {9, 10, 20};
const double kGamma[kModes] = {0.5, 0.75, 1};
// The curve value (g) at each mode's period 6.284 / omega: 0.698 and 0.628 s
// lie on the -2 plateau, 0.314 s on the +1 one.
const double kCurve[kModes] = {-2, -2, 1};
constexpr double kDamping = 0.05;
constexpr double kDuration = 10;

// Frame nodes 2 to 4 carry x in equations 1, 3, 5 (unit masses); an x motion
// moves these by 1, so Gamma is the sum of a mode's x values.
void WriteThreeModeModel(const ModelFixture& f) {
    testing::FrequencyCaseData c = testing::FrameFrequencyCase();
    c.Eigenvalues = {81, 100, 400};
    c.Shapes = {{0, 0.5f, 0, 0, 0, 0, 0}, {0, 0.25f, 0, 0.5f, 0, 0, 0}, {0, 0, 0, 0, 0, 1, 0}};
    WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
    WriteFile(f.File(".URS1"), "0,1\r\n0.5,1\r\n0.6,-2\r\n10,-2\r\n-1\r\n");
}

// Modal base shears Gamma^2 Sd f omega^2, Sd being the curve's acceleration
// (curve factor 9.81 as a single) over omega^2, kept as a single.
std::vector<double> ModalShears(double f) {
    std::vector<double> a;
    for (int m = 0; m < kModes; ++m) {
        const double w2 = kOmega[m] * kOmega[m];
        const double sd = float(double(9.81f) * kCurve[m] / w2);
        a.push_back(kGamma[m] * kGamma[m] * sd * f * w2);
    }
    return a;
}

// The double sums in their textbook form.
double Cqc(const std::vector<double>& a) {
    double sum = 0;
    for (int i = 0; i < kModes; ++i) {
        for (int j = 0; j < kModes; ++j) {
            const double r = kOmega[j] / kOmega[i], z = kDamping;
            double rho = 1;
            if (i != j) {
                rho = 8 * z * z * (1 + r) * std::pow(r, 1.5) /
                      ((1 - r * r) * (1 - r * r) + 4 * z * z * r * (1 + r * r) + 8 * z * z * r * r);
            }
            sum += rho * a[i] * a[j];
        }
    }
    return std::sqrt(sum);
}

double Dsm(const std::vector<double>& a) {
    double sum = 0;
    for (int i = 0; i < kModes; ++i) {
        for (int j = 0; j < kModes; ++j) {
            // Damped frequencies, and the damping raised by the duration.
            const double damped = std::sqrt(1 - kDamping * kDamping);
            const double zi = 2 / kDuration / kOmega[i] + kDamping, zj = 2 / kDuration / kOmega[j] + kDamping;
            const double eps = damped * (kOmega[j] - kOmega[i]) / (zj * kOmega[j] + zi * kOmega[i]);
            sum += a[i] * a[j] / (1 + eps * eps);
        }
    }
    return std::sqrt(sum);
}

std::string Field(const std::string& text) { return std::string(12 - text.size(), ' ') + text; }

// The block as the report and the results case show it: x only, the other
// two columns 0.
std::vector<std::string> Block(const std::string& combName, const std::string& total) {
    return {" ", "Base Shear Components due to Translational Motion  Comb-" + combName,
            "              Fxe         Fye          Fze ",
            "Total  " + Field(total) + Field("0.000E00") + Field("0.000E00")};
}

TEST(BaseShear, EachMethodCombinesTheModalShearsAsWorkedOutByHand) {
    ModelFixture f;
    WriteThreeModeModel(f);
    InProcessRun run(f.dir.Path(), "3/7/");
    RunState& s = run.state;
    s.Options.ShowModalShear = 1;

    const std::vector<double> a = ModalShears(1);
    // A1 = -0.25 x 2 x 9.81 = -4.905, A2 = -0.5625 x 2 x 9.81 = -11.03625,
    // A3 = 9.81; 9 and 10 rad/s lie within 10 % of the later one, 20 does not.
    const double group = std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2] + 2 * std::fabs(a[0] * a[1]));
    const struct {
        i16 method;
        const char* name;
        double figure;
        const char* byHand;
    } cases[] = {
        {0, "SRSS", std::sqrt(a[0] * a[0] + a[1] * a[1] + a[2] * a[2]), "1.556E01"},
        {1, "QCQ", Cqc(a), "1.697E01"},
        {2, "10% Group", group, "1.872E01"},
        {3, "DSM", Dsm(a), "1.737E01"},
        // A plain sum: the two negative shears outweigh the positive one.
        {4, "ABS Sum", a[0] + a[1] + a[2], "-6.131E00"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(ExponentText(c.figure), c.byHand);
        s.Options.CombMethod = c.method;
        SetCombNameFromMethod(s.Options);
        run.Analyze();
        const double shear = c.method == 4 ? s.BaseShear(1) : std::sqrt(double(s.BaseShear(1)));
        EXPECT_NEAR(shear, c.figure, 2e-6 * std::fabs(c.figure));
        const std::vector<std::string> block = Block(c.name, c.byHand);
        ASSERT_GE(s.List1.size(), block.size());
        EXPECT_EQ(std::vector<std::string>(s.List1.end() - 4, s.List1.end()), block);
        // The report goes into the results case as comment lines.
        EXPECT_NE(ReadFile(f.File(".L20")).find("\r\nACOM," + block[3] + "\r\n"), std::string::npos);
    }

    // A negative direction factor turns every modal shear round: the plain
    // sum changes sign, the quadratic methods do not.
    s.Options.DirFactor(1) = -1;
    s.Options.CombMethod = 4;
    SetCombNameFromMethod(s.Options);
    run.Analyze();
    EXPECT_EQ(s.List1.back(), Block("ABS Sum", "6.131E00")[3]);
    s.Options.CombMethod = 2;
    run.Analyze();
    EXPECT_EQ(s.List1.back(), Block("", "1.872E01")[3]);
}

}  // namespace
}  // namespace tremodal
