// The excitation of all six directions at a principal angle of 120 degrees,
// with nodes off the rotation datum, seen through a real run of TreModal:
// every mode of the case moves one equation by 1, so its participation
// factor is the excitation of that equation and the modal response file
// shows it times the spectral displacement and the direction factor. The
// last node's x and y share one equation, so the order of the stores shows.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/binary_files.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

constexpr int kEquations = 8;
// The fixture's nodes stand at (n, 2n, -n); the datum at (0.5, 1, 0.25).
constexpr double kGround[3] = {0.5, 1, 0.25};
// Equations of nodes 2, 3, 4 by freedom x, y, z: node 4's x and y share 7.
constexpr int kNodeDof[3][3] = {{1, 2, 3}, {4, 5, 6}, {7, 7, 8}};
// The direction factors of the fresh options.
constexpr float kFactor[7] = {0, 1, 0.5f, 0.7f, 0.0014875f, 0.0025f, 0.002125f};

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
        switch (d) {
            case 1:
            case 3:  // x, y, z in that order: y's 0 stands in a shared slot
                r[eq[0]] = float(c), r[eq[1]] = 0, r[eq[2]] = float(s);
                break;
            case 2:
                r[eq[0]] = 0, r[eq[1]] = 1, r[eq[2]] = 0;
                break;
            case 5:  // axis (0, 1, 0)
                r[eq[0]] = float(dz), r[eq[1]] = 0, r[eq[2]] = float(-dx);
                break;
            default:  // axis (c, 0, s): y, z, x, then the rest of y added
                r[eq[1]] = float(-dz * c);
                r[eq[2]] = float(dy * c);
                r[eq[0]] = float(-dy * s);
                r[eq[1]] = float(double(r[eq[1]]) + dx * s);
                break;
        }
    }
    return r;
}

TEST(Excitation, AllDirectionsAt120DegreesOffTheDatum) {
    ModelFixture f;
    f.WriteStandInCasepost();
    testing::FrequencyCaseData c;
    c.CaseNodes = 4;
    c.NumDof = kEquations;
    c.DirMass = {3, 3, 3, 0, 0, 0};
    c.NodeDof = {{0, 0, 0, 0, 0, 0}, {1, 2, 3, 0, 0, 0}, {4, 5, 6, 0, 0, 0}, {7, 7, 8, 0, 0, 0}};
    // Mode k moves equation k alone, all at 10 rad/s (a period above 0.4 s,
    // so the rotations take their factors unscaled).
    for (int k = 1; k <= kEquations; ++k) {
        c.Eigenvalues.push_back(100);
        std::vector<float> shape(kEquations + 1, 0.0f);
        shape[std::size_t(k)] = 1;
        c.Shapes.push_back(shape);
    }
    c.Masses = std::vector<double>(kEquations, 1.0);
    WriteFile(f.File(".H1"), testing::FrequencyCaseBytes(c));
    std::string options = testing::kFreshOptionsFile;
    for (const char* off : {" 0.5           0 ", " 0.7           0 ", " 0.0014875     0 ",
                            " 0.0025        0 ", " 0.002125      0 "}) {
        std::string on = off;
        on[on.size() - 2] = '1';
        options.replace(options.find(off), on.size(), on);
    }
    WriteFile(f.File(".USM3"), options);
    testing::SetOptionsLine(f.File(".USM3"), "Principal Direction",
                            "Principal Direction                  , 120");
    testing::SetOptionsLine(f.File(".USM3"), "Rotation Datum",
                            "Rotation Datum (Ground)   X   Y   Z    , 0.5 1 0.25");
    ASSERT_EQ(f.RunTreModal("3/7/"), 0) << f.Stderr();

    // The flat curve of 1 g: a spectral displacement of 9.81 / 100.
    const double sd = float(double(9.81f) / 100);
    for (int d = 1; d <= 6; ++d) {
        SCOPED_TRACE("direction " + std::to_string(d));
        const std::vector<float> r = ExpectedExcitation(d);
        const std::string bytes = ReadFile(f.File(".HS" + std::to_string(d)));
        ASSERT_EQ(bytes.size(), 16u + 8 * kEquations + kEquations * 48 * 4);
        const auto* at = reinterpret_cast<const unsigned char*>(bytes.data());
        for (int k = 1; k <= kEquations; ++k) {
            // Equation k's first entry in mode k's block.
            const std::size_t block = 16 + 8 * kEquations + 48 * 4 * std::size_t(k - 1);
            std::size_t entry = 0;
            while (GetI32(at + block + 8 * entry) != k) ++entry;
            const float expected = float(sd * r[std::size_t(k)] * kFactor[d]);
            EXPECT_EQ(GetF32(at + block + 8 * entry + 4), expected) << "equation " << k;
        }
    }
}

}  // namespace
}  // namespace tremodal
