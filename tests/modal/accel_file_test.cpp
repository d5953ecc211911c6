// The accelerations file, which only the dialog asks for: its lines are print
// statements with Tab(6), Tab(11) and Tab(12), and a tab to a column the line
// has already passed goes to that column of the next line. So a node number
// from 1000 on (" 1000 " ends past column 6) and a mode number from 1000 on
// break their lines, and the ABS row always begins on a line of its own.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/closed_form.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ExponentText;
using testing::InProcessRun;
using testing::ModelFixture;
using testing::ReadFile;
using testing::ThreeDecimalsText;

std::string Right(const std::string& text, std::size_t width) {
    return std::string(width - text.size(), ' ') + text;
}

// A period field and the six acceleration fields of a line: x as given, all
// other freedoms at rest.
std::string Period(double seconds) { return Right(ThreeDecimalsText(seconds), 8); }
std::string Accelerations(double x) {
    std::string fields = Right(ExponentText(x), 11);
    for (int k = 2; k <= 6; ++k) fields += Right("0.000E00", 11);
    return fields;
}

// The options' curve factor 9.81 as a single.
const double kCurveFactor = double(9.81f);

// 2 pi / omega as the file rounds it, omega being the single of the case.
double ModePeriod(double eigenvalue) {
    return float(6.28318530717958 / double(float(std::sqrt(eigenvalue))));
}

TEST(AccelFile, EveryRowOfASmallFrameAndTheAbsRowOnALineOfItsOwn) {
    // Mode 1 (100 rad^2/s^2) sways x with 0.25, 0.5, 0.75 at nodes 2 to 4, so
    // Gamma is 1.5 under an x motion on the flat 1 g curve.
    ModelFixture f;
    f.WriteFrequencyCase();
    InProcessRun run(f.dir.Path(), "3/7/");
    run.state.Options.CreateAccelFile = 1;
    run.Analyze();
    // 9.81 x 1.5 x 0.25 = 3.67875; mode 2 moves z only, which an x motion
    // does not excite.
    const std::string node2 = Accelerations(kCurveFactor * 1.5 * 0.25);
    ASSERT_EQ(node2, "   3.679E00   0.000E00   0.000E00   0.000E00   0.000E00   0.000E00");
    const std::string file = ReadFile(f.File(".SEA-1.O.20"));
    // Node 1 is the restrained base, without equations.
    const std::string table1 =
        "Node  Mode   Period     x          y          z          xr         yr         zr!\r\n"
        " 1    1   " +
        Period(ModePeriod(100)) + Accelerations(0) +
        "\r\n"
        " 1    2   " +
        Period(ModePeriod(400)) + Accelerations(0) +
        "\r\n"
        " 2    1   " +
        Period(ModePeriod(100)) + node2 + "\r\n";
    EXPECT_EQ(file.substr(0, table1.size()), table1);
    EXPECT_NE(
        file.find("\r\nNode CombType     x          y          z          xr         yr         zr!  \r\n"
                  " 1   SRSS  " +
                  Accelerations(0) + "\r\n     ABS   " + Accelerations(0) +
                  "\r\n"
                  " 2   SRSS  " +
                  node2 + "\r\n     ABS   " + node2 + "\r\n 3   SRSS  "),
        std::string::npos);
}

TEST(AccelFile, NodeNumbersFrom1000OnBreakTheirLines) {
    // The one-column building of 999 storeys: node 1000 is the top floor.
    testing::TempDir dir;
    ASSERT_EQ(testing::RunCommand(std::string("'") + EXAMPLE_TOOL + "' '" + dir.Path() +
                                  "' --name-file --storeys 999 --modes 2 --directions 1 --comb SRSS"
                                  " --spectrum flat --flat-value 0.3 > /dev/null"),
              0);
    InProcessRun run(dir.Path(), "1/20/");
    run.state.Options.CreateAccelFile = 1;
    run.Analyze();

    // The first x mode on the flat curve: a Gamma phi at a floor, Gamma phi
    // being 2 / (2N + 1) cot(theta / 2) sin(j theta) in closed form.
    const int storeys = 999;
    const double theta = closed_form::ModeAngle(storeys, 1);
    const double omega = closed_form::FamilyOmega(storeys, 1000, 1.0e6, 1);
    const auto accel = [&](int floor) {
        return 0.3 * kCurveFactor * 2 / (2.0 * storeys + 1) / std::tan(theta / 2) * std::sin(floor * theta);
    };
    const std::string period = Period(ModePeriod(omega * omega));
    const std::string file = ReadFile(dir.File("SHEAR.SEA-1.O.20"));
    EXPECT_NE(file.find("\r\n 999  1   " + period + Accelerations(accel(998)) + "\r\n"), std::string::npos);
    EXPECT_NE(file.find("\r\n 1000 \r\n      1   " + period + Accelerations(accel(999)) + "\r\n"),
              std::string::npos);
    // The z mode has no share in an x motion: SRSS and ABS are mode 1's.
    EXPECT_NE(file.find("\r\n 999 SRSS  " + Accelerations(accel(998)) + "\r\n     ABS   "),
              std::string::npos);
    const std::string top = Accelerations(accel(999));
    EXPECT_EQ(file.substr(file.size() - 2 * 79 - 8),
              " 1000 \r\n     SRSS  " + top + "\r\n     ABS   " + top + "\r\n");
}

TEST(AccelFile, ModeNumbersFrom1000OnBreakTheirLines) {
    // The frame with 1000 modes, eigenvalues 101 to 1100; only mode 1000
    // moves, 0.25 at node 2 in x, so that its Gamma is 0.25 and its
    // acceleration there 9.81 x 0.25 x 0.25 = 0.613125.
    ModelFixture f;
    testing::FrequencyCaseData c = testing::FrameFrequencyCase();
    c.Eigenvalues.clear();
    c.Shapes.clear();
    for (int m = 1; m <= 1000; ++m) {
        c.Eigenvalues.push_back(100.0 + m);
        c.Shapes.push_back({0, m == 1000 ? 0.25f : 0.0f, 0, 0, 0, 0, 0});
    }
    testing::WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
    InProcessRun run(f.dir.Path(), "3/7/");
    run.state.Options.CreateAccelFile = 1;
    run.Analyze();

    const std::string moving = Accelerations(kCurveFactor * 0.25 * 0.25);
    ASSERT_EQ(moving, "  6.131E-01   0.000E00   0.000E00   0.000E00   0.000E00   0.000E00");
    const std::string file = ReadFile(f.File(".SEA-1.O.20"));
    EXPECT_NE(file.find("\r\n 2    999 " + Period(ModePeriod(1099)) + Accelerations(0) + "\r\n"),
              std::string::npos);
    EXPECT_NE(file.find("\r\n 2    1000 \r\n          " + Period(ModePeriod(1100)) + moving + "\r\n"),
              std::string::npos);
    EXPECT_NE(file.find("\r\n 2   SRSS  " + moving + "\r\n     ABS   " + moving + "\r\n"), std::string::npos);
}

}  // namespace
}  // namespace tremodal
