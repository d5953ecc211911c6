// The accelerations file, which only the dialog asks for: its lines are print
// statements with Tab(6), Tab(11) and Tab(12), and a tab to a column the line
// has already passed goes to that column of the next line. So a mode number
// from 1000 on breaks its line (as a node number from 1000 on does, by the
// same tab), and the ABS row always begins on a line of its own.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using namespace testing;

std::string Right(const std::string& text, std::size_t width) {
    return std::string(width - text.size(), ' ') + text;
}

// A period field and the six acceleration fields of a line: x as given, all
// other freedoms at rest.
std::string Period(double seconds) { return Right(ThreeDecimalsText(seconds), 8); }
std::string Accelerations(double x) {
    return Right(ExponentText(x), 11) + "   0.000E00   0.000E00   0.000E00   0.000E00   0.000E00";
}

// 2 pi / omega as the file rounds it, omega being the single of the
// eigenvalue's root.
double ModePeriod(double e) { return float(6.28318530717958 / double(float(std::sqrt(e)))); }

TEST(AccelFile, RowsOfAFrameAndModeNumbersFrom1000OnBreakTheirLines) {
    // The frame with 1000 modes, eigenvalues 101 to 1100; only mode 1000
    // moves, 0.25 at node 2 in x, so that its Gamma is 0.25 and its
    // acceleration there 9.81 x 0.25 x 0.25 = 0.613125. Node 1 is the
    // restrained base, without equations.
    ModelFixture f;
    auto c = testing::FrameFrequencyCase();
    c.Eigenvalues.clear(), c.Shapes.clear();
    for (int m = 1; m <= 1000; ++m)
        c.Eigenvalues.push_back(100.0 + m), c.Shapes.push_back({0, m == 1000 ? 0.25f : 0.0f, 0, 0, 0, 0, 0});
    testing::WriteFile(f.File(".H1"), example::FrequencyCaseBytes(c));
    InProcessRun run(f.dir.Path(), "3/7/");
    run.state.Options.CreateAccelFile = 1;
    run.Analyze();

    const std::string moving = Accelerations(double(9.81f) * 0.25 * 0.25), still = Accelerations(0);
    const std::string file = ReadFile(f.File(".SEA-1.O.20"));
    const std::string head =
        "Node  Mode   Period     x          y          z          xr         yr         zr!\r\n"
        " 1    1   " +
        Period(ModePeriod(101)) + still + "\r\n";
    EXPECT_EQ(file.substr(0, head.size()), head);
    EXPECT_NE(file.find("\r\n 2    999 " + Period(ModePeriod(1099)) + still + "\r\n"), std::string::npos);
    EXPECT_NE(file.find("\r\n 2    1000 \r\n          " + Period(ModePeriod(1100)) + moving + "\r\n"),
              std::string::npos);
    EXPECT_NE(
        file.find("\r\nNode CombType     x          y          z          xr         yr         zr!  \r\n"
                  " 1   SRSS  " +
                  still + "\r\n     ABS   " + still + "\r\n 2   SRSS  " + moving + "\r\n     ABS   " +
                  moving + "\r\n"),
        std::string::npos);
}

}  // namespace
}  // namespace tremodal
