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

TEST(ExampleModel, LowestModesAndSquareMassKeepTheLayout) {
    TempDir full, lowest;
    ASSERT_EQ(MakeModel(full, "--storeys 4"), 0);
    ASSERT_EQ(MakeModel(lowest, "--storeys 4 --modes 3 --mass-form square --mass-noise 0.1"), 0);
    const CaseFile f(full.File("SHEAR.H1")), l(lowest.File("SHEAR.H1"));
    ASSERT_EQ(l.modes, 3);
    // The lowest three of the full set, shapes byte for byte.
    for (int mode = 1; mode <= 3; ++mode) {
        EXPECT_EQ(l.eigen[mode - 1], f.eigen[mode - 1]);
        EXPECT_EQ(l.bytes.substr(l.Pair(mode, 1, 1), 5 * 48), f.bytes.substr(f.Pair(mode, 1, 1), 5 * 48));
    }
    // Square form at 40 + 8 M + M CaseNodes 48: form 0, a skipped word, NumDof^2 doubles.
    ASSERT_EQ(l.massFormAt, 40 + 24 + 3 * 5 * 48);
    EXPECT_EQ(l.massForm, 0);
    ASSERT_EQ(l.bytes.size(), std::size_t(l.massFormAt + 8 + 8 * 8 * 8));
    int offDiagonal = 0;
    for (int i = 1; i <= 8; ++i) {
        for (int j = 1; j <= 8; ++j) {
            const f64 value = l.F64(l.massFormAt + 8 + 8 * ((i - 1) * 8 + (j - 1)));
            if (i == j) {
                EXPECT_EQ(value, 1000.0);
            }
            if (i != j && value != 0) ++offDiagonal;
        }
    }
    EXPECT_GT(offDiagonal, 20);
}

TEST(ExampleModel, LargeModelKeepsEveryModeToTheLastByte) {
    // 2001 nodes and 240 modes: the shape block spans several write blocks.
    // Every floor freedom has an equation, 6 (j - 1) + d, and only x or z sways.
    TempDir dir;
    example::ShearBuilding b;
    b.Storeys = 2000;
    ASSERT_EQ(MakeModel(dir, "--storeys 2000 --modes 240 --all-freedoms"), 0);
    const CaseFile c(dir.File("SHEAR.H1"));
    ASSERT_EQ(c.bytes.size(), std::size_t(40 + 8 * 240 + 240 * 2001 * 48 + 8 + 8 * 12000));
    const std::vector<example::BuildingMode> modes = example::SortedModes(b, 240);
    for (int mode : {1, 97, 171, 240}) {
        const example::BuildingMode& bm = modes[mode - 1];
        EXPECT_DOUBLE_EQ(c.eigen[mode - 1], bm.Omega * bm.Omega);
        for (int floor : {1, 1000, 1999, 2000}) {
            for (int d = 1; d <= 6; ++d) EXPECT_EQ(c.Equation(mode, floor + 1, d), 6 * (floor - 1) + d);
            const int sway = example::SwayFreedom(bm.Family);
            EXPECT_FLOAT_EQ(c.Value(mode, floor + 1, sway),
                            float(example::ShapeValue(2000, 1000, bm.Order, floor)));
            EXPECT_EQ(c.Value(mode, floor + 1, 4 - sway), 0.0f);
            EXPECT_EQ(c.Value(mode, floor + 1, 2), 0.0f);
        }
    }
    EXPECT_EQ(c.F64(c.bytes.size() - 8), 1000.0);

    // A square mass block of 1200 equations (11 MB) written in pieces.
    TempDir square;
    ASSERT_EQ(MakeModel(square, "--storeys 600 --modes 1 --mass-form square"), 0);
    const CaseFile s(square.File("SHEAR.H1"));
    ASSERT_EQ(s.bytes.size(), std::size_t(s.massFormAt + 8 + 8 * 1200 * 1200));
    EXPECT_EQ(s.F64(s.massFormAt + 8 + 8 * (1200 * 600 + 600)), 1000.0);
    EXPECT_EQ(s.F64(s.bytes.size() - 8), 1000.0);
    EXPECT_EQ(s.F64(s.bytes.size() - 16), 0.0);
}

TEST(ExampleModel, CoordinatesSizeFileAndSpectrumCurves) {
    TempDir dir, flat;
    ASSERT_EQ(MakeModel(dir, "--name TOWER --storeys 6 --height 3.5 --zpa 0.25"), 0);
    const std::string xyz = ReadFile(dir.File("TOWER.XYZ"));
    ASSERT_EQ(xyz.size(), 7u * 14);
    const auto* bytes = reinterpret_cast<const unsigned char*>(xyz.data());
    for (int node = 1; node <= 7; ++node) {
        const unsigned char* record = bytes + 14 * (node - 1);
        EXPECT_EQ(GetI16(record), node);
        EXPECT_EQ(GetF32(record + 2), 0.0f);
        EXPECT_FLOAT_EQ(GetF32(record + 6), 3.5f * (node - 1));
        EXPECT_EQ(GetF32(record + 10), 0.0f);
    }

    // Read as start-up reads it: text, name, title, three texts, four singles,
    // seven texts, the unit system.
    TextInput size(dir.File("TOWER.XSZ"));
    size.ReadTextField();
    EXPECT_EQ(size.ReadTextField(), "TOWER");
    EXPECT_EQ(size.ReadTextField(), "Uniform shear building of 6 storeys");
    for (int i = 0; i < 3; ++i) size.ReadTextField();
    EXPECT_EQ(size.ReadSingleField(), 6.0f);
    size.ReadSingleField();
    EXPECT_EQ(size.ReadSingleField(), 7.0f);
    size.ReadSingleField();
    for (int i = 0; i < 7; ++i) size.ReadTextField();
    EXPECT_EQ(size.ReadI32Field(), 0);
    EXPECT_TRUE(size.AtEnd());

    auto readCurve = [](const std::string& path, std::vector<f32>& periods, std::vector<f32>& values) {
        TextInput in(path);
        for (f32 t = in.ReadSingleField(); t != -1.0f; t = in.ReadSingleField()) {
            periods.push_back(t);
            values.push_back(in.ReadSingleField());
        }
        EXPECT_TRUE(in.AtEnd());
        const std::string text = ReadFile(path);
        EXPECT_EQ(text.substr(text.size() - 4), "-1\r\n");
    };
    std::vector<f32> periods, values;
    readCurve(dir.File("TOWER.URS1"), periods, values);
    ASSERT_GE(periods.size(), 10u);
    ASSERT_LE(periods.size(), 20u);
    for (std::size_t i = 1; i < periods.size(); ++i) EXPECT_LT(periods[i - 1], periods[i]);
    EXPECT_EQ(periods.front(), 0.0f);
    EXPECT_FLOAT_EQ(values.front(), 0.25f);
    EXPECT_FLOAT_EQ(*std::max_element(values.begin(), values.end()), 0.625f);
    EXPECT_LT(values.back(), values.front());

    ASSERT_EQ(MakeModel(flat, "--storeys 6 --kx 1000 --spectrum flat --flat-value 0.4"), 0);
    periods.clear(), values.clear();
    readCurve(flat.File("SHEAR.URS1"), periods, values);
    ASSERT_EQ(periods.size(), 2u);
    EXPECT_EQ(periods[0], 0.0f);
    // A soft building: the first period is about 26 s, the curve reaches past it.
    const double firstPeriod = 2 * example::kPi / example::FamilyOmega(6, 1000, 1000, 1);
    EXPECT_GT(periods[1], firstPeriod * 6.284 / 6.2832);
    for (f32 v : values) EXPECT_EQ(v, 0.4f);
}

TEST(ExampleModel, OptionsFileNamesTheCaseTheCurveAndBothHorizontalDirections) {
    TempDir dir;
    ASSERT_EQ(MakeModel(dir, "--freq-case 2 --results-case 7 --options 3 --name-file"), 0);
    const std::string modelPath = dir.File("SHEAR");
    EXPECT_TRUE(testing::Exists(modelPath + ".H2"));
    EXPECT_EQ(ReadFile(dir.File("MODEL.NAM")), "\"" + modelPath + "\",\"SHEAR\"\r\n");
    const std::string text = ReadFile(modelPath + ".USM3");
    EXPECT_NE(text.find(",MODEL.URS1\r\n"), std::string::npos);

    RunState state;
    state.Model.ModelPath = modelPath;
    state.Options.OptionsFile = modelPath + ".USM3";
    ReadOptions(state);
    EXPECT_EQ(state.Options.FreqCase, "2");
    EXPECT_EQ(state.Options.ResultsCase, "7");
    EXPECT_EQ(state.Options.SpectrumFile, modelPath + ".URS1");
    EXPECT_EQ(state.Options.SpectrumType, 2);
    EXPECT_EQ(state.Options.CurveFactor, 9.81f);
    const int on[] = {1, 0, 1, 0, 0, 0};
    for (int d = 1; d <= 6; ++d) EXPECT_EQ(state.Options.DirOn(d), on[d - 1]) << "direction " << d;
}

TEST(ExampleModel, ASmallerModelOverAnOldOneLeavesNoTail) {
    TempDir dir;
    ASSERT_EQ(MakeModel(dir, "--storeys 9 --mass-form square"), 0);
    ASSERT_EQ(MakeModel(dir, "--storeys 3"), 0);
    EXPECT_EQ(ReadFile(dir.File("SHEAR.H1")).size(), std::size_t(40 + 8 * 6 + 6 * 4 * 48 + 8 + 8 * 6));
    EXPECT_EQ(ReadFile(dir.File("SHEAR.XYZ")).size(), 4u * 14);
}

TEST(ExampleModel, BadArgumentsGiveTheUsageAndStatus2) {
    for (const char* args :
         {"--storeys 0", "--storeys 2.5", "--storeys x", "--modes 11", "--mass -1", "--mass-form diagonal",
          "--spectrum steep", "--bogus 1", "--storeys", "--mass-noise 0.1", "--name a/b", "extra"}) {
        TempDir dir;
        EXPECT_EQ(MakeModel(dir, args), 2) << args;
        EXPECT_NE(ReadFile(dir.File("err.txt")).find("usage: make_example_model DIR"), std::string::npos)
            << args;
        EXPECT_FALSE(testing::Exists(dir.File("SHEAR.H1"))) << args;
    }
}

TEST(ShearBuildingTheory, EffectiveMassesOfAFamilyAddUpToTheBuildingMass) {
    for (int n : {1, 2, 5, 12}) {
        const double m = 250;
        double total = 0;
        for (int mode = 1; mode <= n; ++mode) {
            double floorSum = 0;
            for (int j = 1; j <= n; ++j) floorSum += m * example::ShapeValue(n, m, mode, j);
            EXPECT_NEAR(example::ParticipationFactor(n, m, mode), floorSum, 1e-9 * std::abs(floorSum));
            total += example::EffectiveMass(n, m, mode);
        }
        EXPECT_NEAR(total, n * m, 1e-9 * n * m) << n << " storeys";
    }
}

}  // namespace
}  // namespace tremodal
