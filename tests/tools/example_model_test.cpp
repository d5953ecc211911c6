// The example model tool, run for real into a temporary directory. The mode
// shapes it writes are checked against the physics of the shear building
// (mass-orthonormal, solving K phi = omega^2 M phi), not against its own
// formulas, and every file is read back by the offsets the analysis uses.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include "tools/shear_building.h"
#include "input/options_file.h"
#include "runcontrol/binary_files.h"
#include "runcontrol/run_state.h"
#include "runcontrol/text_files.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::ReadFile;
using testing::RunCommand;
using testing::TempDir;

int MakeModel(const TempDir& dir, const std::string& args) {
    const char* tool = EXAMPLE_TOOL;  // the build's path of the tool
    return RunCommand("'" + std::string(tool) + "' '" + dir.Path() + "' " + args + " >'" +
                      dir.File("out.txt") + "' 2>'" + dir.File("err.txt") + "'");
}

// The frequency case file, parsed by its offsets with every read bounds-checked.
struct CaseFile {
    std::string bytes;
    i32 caseNodes = 0, numDof = 0, modes = 0, unused = 0;
    f32 dirMass1 = 0;
    std::vector<f64> eigen;
    std::int64_t massFormAt = 0;
    i32 massForm = 0;

    explicit CaseFile(const std::string& path) : bytes(ReadFile(path)) {
        caseNodes = I32(0), numDof = I32(4), modes = I32(8), unused = I32(12);
        dirMass1 = F32(16);
        for (int m = 0; m < modes; ++m) eigen.push_back(F64(40 + 8 * m));
        massFormAt = 40 + 8 * std::int64_t{modes} + std::int64_t{modes} * caseNodes * 48;
        massForm = I32(massFormAt);
    }
    const unsigned char* At(std::int64_t offset, int n) const {
        if (offset < 0 || offset + n > static_cast<std::int64_t>(bytes.size())) {
            throw std::runtime_error("read beyond the file at " + std::to_string(offset));
        }
        return reinterpret_cast<const unsigned char*>(bytes.data()) + offset;
    }
    i32 I32(std::int64_t offset) const { return GetI32(At(offset, 4)); }
    f32 F32(std::int64_t offset) const { return GetF32(At(offset, 4)); }
    f64 F64(std::int64_t offset) const { return GetF64(At(offset, 8)); }
    // Mode, node and freedom from 1.
    std::int64_t Pair(int mode, int node, int freedom) const {
        return 40 + 8 * std::int64_t{modes} + (std::int64_t{mode - 1} * caseNodes + node - 1) * 48 +
               (freedom - 1) * 8;
    }
    i32 Equation(int mode, int node, int freedom) const { return I32(Pair(mode, node, freedom)); }
    f32 Value(int mode, int node, int freedom) const { return F32(Pair(mode, node, freedom) + 4); }
    // The shape of a mode by equation, from 1; slot 0 takes freedoms without one.
    std::vector<double> Shape(int mode) const {
        std::vector<double> phi(numDof + 1, 0.0);
        for (int node = 1; node <= caseNodes; ++node)
            for (int d = 1; d <= 6; ++d) phi.at(Equation(mode, node, d)) = Value(mode, node, d);
        phi[0] = 0;
        return phi;
    }
};

TEST(ExampleModel, ModeShapesAreMassOrthonormalAndSolveTheShearBuildingEquation) {
    TempDir dir;
    const int n = 7;
    const double m = 500, kx = 2.0e6, kz = 3.3e6;
    ASSERT_EQ(MakeModel(dir, "--storeys 7 --mass 500 --kx 2e6 --kz 3.3e6"), 0);
    const CaseFile c(dir.File("SHEAR.H1"));

    ASSERT_EQ(c.caseNodes, n + 1);
    ASSERT_EQ(c.numDof, 2 * n);
    ASSERT_EQ(c.modes, 2 * n);
    EXPECT_EQ(c.unused, 0);
    EXPECT_FLOAT_EQ(c.dirMass1, n * m);
    // Lumped form: form 1, a count of NumDof, the masses, and nothing behind.
    EXPECT_EQ(c.massForm, 1);
    EXPECT_EQ(c.I32(c.massFormAt + 4), 2 * n);
    for (int i = 0; i < 2 * n; ++i) EXPECT_EQ(c.F64(c.massFormAt + 8 + 8 * i), m);
    EXPECT_EQ(c.bytes.size(), std::size_t(40 + 8 * 14 + 14 * 8 * 48 + 8 + 8 * 14));

    std::vector<std::vector<double>> shapes;
    double effectiveX = 0, effectiveZ = 0;
    for (int mode = 1; mode <= c.modes; ++mode) {
        if (mode > 1) {
            EXPECT_LT(c.eigen[mode - 2], c.eigen[mode - 1]) << "ascending frequencies";
        }
        // The base node has no equation; floor j (node j + 1) has x = 2j - 1, z = 2j.
        for (int d = 1; d <= 6; ++d) EXPECT_EQ(c.Equation(mode, 1, d), 0);
        for (int j = 1; j <= n; ++j) {
            for (int d = 1; d <= 6; ++d) {
                const int expected = d == 1 ? 2 * j - 1 : d == 3 ? 2 * j : 0;
                EXPECT_EQ(c.Equation(mode, j + 1, d), expected) << "mode " << mode << " floor " << j;
                if (expected == 0) {
                    EXPECT_EQ(c.Value(mode, j + 1, d), 0.0f);
                }
            }
        }
        const std::vector<double> phi = c.Shape(mode);
        shapes.push_back(phi);
        // One family per mode: sways in x (odd equations) or in z (even ones).
        double swayX = 0, swayZ = 0;
        for (int j = 1; j <= n; ++j) swayX += std::abs(phi[2 * j - 1]), swayZ += std::abs(phi[2 * j]);
        ASSERT_TRUE((swayX > 0) != (swayZ > 0)) << "mode " << mode;
        const int offset = swayX > 0 ? -1 : 0;
        const double k = swayX > 0 ? kx : kz;
        // Storey shear balance at every floor: k (2 phi_j - phi_j-1 - phi_j+1)
        // below the top, k (phi_N - phi_N-1) at it, equals omega^2 m phi_j.
        const double lambda = c.eigen[mode - 1];
        auto at = [&](int floor) { return floor < 1 ? 0.0 : phi[2 * floor + offset]; };
        double peak = 0;
        for (int j = 1; j <= n; ++j) peak = std::max(peak, std::abs(at(j)));
        for (int j = 1; j <= n; ++j) {
            const double elastic = j < n ? k * (2 * at(j) - at(j - 1) - at(j + 1)) : k * (at(j) - at(j - 1));
            EXPECT_NEAR(elastic, lambda * m * at(j), 1e-5 * lambda * m * peak)
                << "mode " << mode << " floor " << j;
        }
        double gamma = 0;
        for (int j = 1; j <= n; ++j) gamma += m * phi[2 * j + offset];
        (swayX > 0 ? effectiveX : effectiveZ) += gamma * gamma;
    }
    for (int a = 0; a < c.modes; ++a) {
        for (int b = 0; b < c.modes; ++b) {
            double product = 0;
            for (int i = 1; i <= c.numDof; ++i) product += m * shapes[a][i] * shapes[b][i];
            EXPECT_NEAR(product, a == b ? 1.0 : 0.0, 1e-6) << "modes " << a + 1 << ", " << b + 1;
        }
    }
    // All modes of a family together reach the whole mass of the building.
    EXPECT_NEAR(effectiveX, n * m, 1e-5 * n * m);
    EXPECT_NEAR(effectiveZ, n * m, 1e-5 * n * m);
}

}  // namespace
}  // namespace tremodal
