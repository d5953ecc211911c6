// The excitation of all six directions at a principal angle of 120 degrees,
// with nodes off the rotation datum. The last node's x and y share one
// equation, so the order of the stores shows.
#include "modal/excitation.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tremodal {
namespace {

constexpr int kEquations = 8;
// The fixture's nodes stand at (n, 2n, -n); the datum at (0.5, 1, 0.25).
constexpr double kGround[3] = {0.5, 1, 0.25};
// Equations of nodes 2, 3, 4 by freedom x, y, z: node 4's x and y share 7.
constexpr int kNodeDof[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 7, 8}};

// The excitation of each equation in direction d, from the rigid body motion
// in its own words: a translation along (c, 0, s), the vertical, and a unit
// rotation about an axis through the datum, the cross product axis x arm.
std::vector<float> ExpectedExcitation(int d) {
    const double pi = 3.14159265358979, a = 120 * pi / 180;
    // Translations along the major wave (cos a, sin a) = (-0.5, 0.866) and the
    // minor wave 90 degrees on; the horizontal rotation axes are held in the
    // quadrant of positive x and z.
    double c = std::cos(a), s = std::sin(a);
    if (d == 3 || d == 6) c = std::cos(pi / 2 + a), s = std::sin(pi / 2 + a);
    if (d == 4 || d == 6) c = std::fabs(c), s = std::fabs(s);
    std::vector<float> r(kEquations + 1, 0.0f);
    for (int node = 2; node <= 4; ++node) {
        const double dx = node - kGround[0], dy = 2.0 * node - kGround[1], dz = -node - kGround[2];
        const int* eq = kNodeDof[node - 2];
        // Translations and the vertical rotation store x, y, z in that order:
        // y's 0 stands in a shared slot.
        if (d == 1 || d == 3) r[eq[0]] = float(c), r[eq[1]] = 0, r[eq[2]] = float(s);
        if (d == 2) r[eq[0]] = 0, r[eq[1]] = 1, r[eq[2]] = 0;
        if (d == 5) r[eq[0]] = float(dz), r[eq[1]] = 0, r[eq[2]] = float(-dx);  // axis (0, 1, 0)
        // Axis (c, 0, s): y, z, x, then the rest of y added.
        if (d == 4 || d == 6) {
            r[eq[1]] = float(-dz * c), r[eq[2]] = float(dy * c), r[eq[0]] = float(-dy * s);
            r[eq[1]] = float(double(r[eq[1]]) + dx * s);
        }
    }
    return r;
}

TEST(Excitation, AllDirectionsAt120DegreesOffTheDatum) {
    RunState s;
    s.Model.NumNodes = 4, s.Freq.NumDof = kEquations, s.Freq.NumModes = 1;
    AllocateRunArrays(s);
    for (Array1<f32>* coordinate : {&s.Model.NodeX, &s.Model.NodeY, &s.Model.NodeZ}) coordinate->Allocate(4);
    for (int n = 1; n <= 4; ++n) {
        s.Model.NodeX(n) = f32(n), s.Model.NodeY(n) = f32(2 * n), s.Model.NodeZ(n) = f32(-n);
        for (int k = 1; k <= 3 && n > 1; ++k) s.Freq.NodeDof(n, k) = kNodeDof[n - 2][k - 1];
    }
    s.Options.PrincipalAngle = 120, s.Options.GroundX = f32(kGround[0]);
    s.Options.GroundY = f32(kGround[1]), s.Options.GroundZ = f32(kGround[2]);
    for (i16 d = 1; d <= 6; ++d) {
        BuildExcitation(s, d);
        const std::vector<float> r = ExpectedExcitation(d);
        for (int k = 1; k <= kEquations; ++k) EXPECT_EQ(s.Excitation(k), r[std::size_t(k)]) << d << ", " << k;
    }
}

}  // namespace
}  // namespace tremodal
