#include "modal/excitation.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

std::uint32_t Bits(f32 x) { return std::bit_cast<std::uint32_t>(x); }

class Excitation : public ::testing::Test {
protected:
    // Nodes at the given points, node n on equations 3n-2, 3n-1, 3n for x, y, z
    // and nothing on its rotations unless a test says so.
    void Build(std::initializer_list<std::array<f32, 3>> points, f64 angle) {
        const i32 nodes = i32(points.size());
        s.Model.NumNodes = f32(nodes);
        s.Freq.NumDof = 3 * nodes + 3;
        s.Freq.NumModes = 1;
        AllocateRunArrays(s);
        s.Model.NodeX.Allocate(nodes);
        s.Model.NodeY.Allocate(nodes);
        s.Model.NodeZ.Allocate(nodes);
        i32 n = 1;
        for (const auto& p : points) {
            s.Model.NodeX(n) = p[0];
            s.Model.NodeY(n) = p[1];
            s.Model.NodeZ(n) = p[2];
            for (int k = 1; k <= 3; ++k) s.Freq.NodeDof(n, k) = 3 * n - 3 + k;
            ++n;
        }
        s.Options.PrincipalAngle = angle;
    }

    RunState s;
};

TEST_F(Excitation, SixDirectionsAtThirtyDegrees) {
    Build({{{1, 2, 3}}}, 30);
    const auto run = [&](i16 d) {
        BuildExcitation(s, d);
        return std::array<f32, 3>{s.Excitation(1), s.Excitation(2), s.Excitation(3)};
    };
    const f32 c30 = 0.866025388f;  // cos 30 as a single
    EXPECT_EQ(run(1), (std::array<f32, 3>{c30, 0, 0.5f}));
    EXPECT_EQ(run(2), (std::array<f32, 3>{0, 1, 0}));
    EXPECT_EQ(run(3), (std::array<f32, 3>{-0.5f, 0, c30}));
    EXPECT_EQ(run(4), (std::array<f32, 3>{-1.0f, -2.09807611f, 1.73205078f}));
    EXPECT_EQ(run(5), (std::array<f32, 3>{3, 0, -1}));
    EXPECT_EQ(run(6), (std::array<f32, 3>{-1.73205078f, -0.633974612f, 1.0f}));
    // Rows 4 and 6 keep their axes in the positive quadrant.
    EXPECT_DOUBLE_EQ(s.CosAngle, std::fabs(std::cos(3.14159265358979 / 2 + 30 * 3.14159265358979 / 180.0)));
}

TEST_F(Excitation, VerticalFreedomOfARotationIsRoundedTwice) {
    // -dz c is stored before dx s is added: one rounding of the whole sum
    // would give 0xbcbe1893.
    Build({{{0.3f, 0, 0.2f}}}, 30);
    BuildExcitation(s, 4);
    EXPECT_EQ(Bits(s.Excitation(2)), 0xbcbe1890u);
}

TEST_F(Excitation, AnglesAndWhatTheyLeaveBehind) {
    Build({{{0, 0, 0}}}, 0);
    BuildExcitation(s, 1);
    EXPECT_EQ(s.Excitation(1), 1.0f);
    EXPECT_EQ(s.Excitation(3), 0.0f);
    // cos(pi/2) of the 14-digit pi is not 0, and nothing rounds it away.
    BuildExcitation(s, 3);
    EXPECT_EQ(s.Excitation(1), f32(std::cos(3.14159265358979 / 2)));
    EXPECT_NE(s.Excitation(1), 0.0f);
    EXPECT_EQ(s.Excitation(3), 1.0f);
    // Directions 2 and 5 keep the angle of the last pass.
    const f64 c = s.CosAngle, sn = s.SinAngle;
    BuildExcitation(s, 2);
    BuildExcitation(s, 5);
    EXPECT_EQ(s.CosAngle, c);
    EXPECT_EQ(s.SinAngle, sn);
    // Out of range does nothing.
    s.Excitation(1) = 42;
    BuildExcitation(s, 7);
    BuildExcitation(s, 0);
    EXPECT_EQ(s.Excitation(1), 42.0f);

    Build({{{0, 0, 0}}}, 120);
    BuildExcitation(s, 1);
    EXPECT_EQ(s.Excitation(1), -0.5f);
    BuildExcitation(s, 4);
    EXPECT_NEAR(s.CosAngle, 0.5, 1e-14);
}

TEST_F(Excitation, NodeCountBeyondSixteenBitsFails) {
    Build({{{0, 0, 0}}}, 0);
    s.Model.NumNodes = 32768;
    EXPECT_EQ(FailureOf([&] { BuildExcitation(s, 1); }), kOverflow);
}

}  // namespace
}  // namespace tremodal
