// The analysis against theory: a uniform shear building whose modes and
// frequencies are known in closed form, run through the whole analysis as a
// batch run does, on the files the example tool writes.
#include "tools/shear_building.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using example::BuildingMode;
using example::FloorEquation;
using example::ShearBuilding;
using example::SortedModes;
using example::Sway;

constexpr double kFlatValue = 0.3;                   // g, all over the curve
constexpr double kAcceleration = 9.81 * kFlatValue;  // with the options' curve factor

// Single precision carries about 7 digits; sums over a few modes lose a few
// units in the last place.
void ExpectNear(double actual, double expected, const std::string& what, double relative = 2e-6) {
    EXPECT_NEAR(actual, expected, relative * std::max(1.0, std::fabs(expected))) << what;
}

struct BuildingRun : testing::ExampleModel {
    ShearBuilding building;
    testing::InProcessRun process;
    RunState& state = process.state;

    // The five-storey building with the lowest `modes` modes (all 10 by
    // default) and a flat acceleration curve, started as a batch run, which
    // runs the analysis once with the example's options.
    explicit BuildingRun(int modes = -1, int columns = 1)
        : ExampleModel("--spectrum flat --flat-value 0.3 --nodes-per-floor " + std::to_string(columns) +
                       (modes >= 0 ? " --modes " + std::to_string(modes) : "")),
          process(dir.Path(), "1/20/") {
        building.NodesPerFloor = columns;
    }

    // Runs again with only direction d on.
    void RunDirection(i16 d, i16 combMethod = 0) {
        for (int i = 1; i <= 6; ++i) state.Options.DirOn(i) = i == d ? 1 : 0;
        state.Options.CombMethod = combMethod;
        process.Analyze();
    }

    // The equation of a floor's freedom at its last column.
    i32 Equation(int floor, int freedom) const {
        return i32(FloorEquation(building, floor, building.NodesPerFloor, freedom, false));
    }

    // The displacement of equation eq in mode m, as the modal response file
    // of direction d hands it over.
    f32 FileDisplacement(i16 d, i32 m, i32 eq) const {
        const testing::ResponseFile hs(File(".HS" + std::to_string(d)));
        for (int node = 1; node <= hs.Nodes(); ++node) {
            for (int k = 1; k <= 6; ++k) {
                if (hs.Equation(m, node, k) == eq) return hs.Value(m, node, k);
            }
        }
        throw std::runtime_error("equation not in the block");
    }
};

// Three columns a floor, each with a third of the floor's mass, move as the
// one-column building does and give the same results.
TEST(ShearBuilding, ParticipationDisplacementsAndShearMatchTheClosedForm) {
    for (int columns : {1, 3}) {
        SCOPED_TRACE("columns " + std::to_string(columns));
        BuildingRun run(-1, columns);
        run.state.Options.CreateAccelFile = 1;
        run.RunDirection(1);
        const RunState& s = run.state;
        const std::vector<BuildingMode> modes = SortedModes(run.building);
        ASSERT_EQ(s.Freq.NumModes, 10);

        double shearSquares = 0;
        for (std::size_t i = 0; i < modes.size(); ++i) {
            const i32 m = i32(i + 1);
            const BuildingMode& mode = modes[i];
            const double gamma = example::ModeParticipation(run.building, mode, 1);
            ExpectNear(s.Freq.Omega(m), mode.Omega, "omega of mode " + std::to_string(m));
            ExpectNear(s.Participation(m), gamma, "participation of mode " + std::to_string(m), 5e-6);
            // A flat acceleration curve gives the spectral displacement a / omega^2.
            const double sd = kAcceleration / (mode.Omega * mode.Omega);
            ExpectNear(s.Curve.ModalSpectrum(m), sd, "spectral displacement of mode " + std::to_string(m));
            for (int floor = 1; floor <= run.building.Storeys; ++floor) {
                const double phi = example::ModeValue(run.building, mode, floor, 1);
                ExpectNear(
                    run.FileDisplacement(1, m, run.Equation(floor, 1)), sd * gamma * phi,
                    "x displacement of floor " + std::to_string(floor) + " in mode " + std::to_string(m),
                    2e-5);
                ExpectNear(
                    s.ModalAccel(run.Equation(floor, 1), m), kAcceleration * gamma * phi,
                    "x acceleration of floor " + std::to_string(floor) + " in mode " + std::to_string(m),
                    2e-5);
                EXPECT_EQ(run.FileDisplacement(1, m, run.Equation(floor, 3)), 0.0f)
                    << "no z response to an x motion";
            }
            const double modalShear = gamma * gamma * kAcceleration;
            shearSquares += modalShear * modalShear;
        }
        // SRSS leaves the square of the base shear.
        ExpectNear(std::sqrt(s.BaseShear(1)), std::sqrt(shearSquares), "SRSS base shear", 1e-5);
        ExpectNear(s.ExcitedMass, 5000, "mass moved by an x motion");
        // With every mode kept, the ZPA of the highest mode is the curve's.
        ExpectNear(s.Curve.ZpaValue, kAcceleration, "ZPA from the highest mode");
    }
}

TEST(ShearBuilding, AllModesReachTheWholeMassAndFewerLeaveTheRestMissing) {
    {
        BuildingRun run;
        run.state.Options.MissMassOn = 1;
        run.RunDirection(1);
        // The last participation row of the direction shows 100.00 %.
        std::string lastRow;
        for (const std::string& line : run.state.List1) {
            if (line.size() == 65) lastRow = line;
        }
        ASSERT_FALSE(lastRow.empty());
        EXPECT_EQ(lastRow.substr(52, 7), " 100.00") << lastRow;
        // What no mode reaches is rounding noise against the building's mass.
        EXPECT_LT(std::fabs(run.state.MissMassBase), 5000 * kAcceleration * 1e-5);
    }
    {
        BuildingRun run(4);  // x1, z1, x2, z2
        run.state.Options.MissMassOn = 1;
        run.RunDirection(1);
        const double kept = example::EffectiveMass(5, 1000, 1) + example::EffectiveMass(5, 1000, 2);
        // The ZPA comes from the highest mode kept, z2: on a flat curve it is
        // the curve's acceleration all the same.
        ExpectNear(run.state.MissMassBase, (5000 - kept) * kAcceleration, "missing mass load", 2e-5);
        double residual = 0;
        for (i32 e = 1; e <= run.state.Freq.NumDof; ++e) residual += run.state.ResidualMass(e);
        ExpectNear(run.state.MissMassFactor * residual, 5000 - kept, "missing mass", 2e-5);
        // The report's cumulative share after mode 4 is that of x1 and x2.
        std::string lastRow;
        for (const std::string& line : run.state.List1) {
            if (line.size() == 65) lastRow = line;
        }
        const double percent = kept / 5000 * 100;
        EXPECT_NEAR(std::stod(lastRow.substr(52, 7)), percent, 0.006) << lastRow;
    }
}

}  // namespace
}  // namespace tremodal
