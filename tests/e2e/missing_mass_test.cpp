// A missing mass analysis as an engineer runs it from the batch tool: the
// first pass writes the load cases and the run comb, the suite's solver
// (simulated here by the closed-form statics of the shear building) leaves
// the solved cases, and the second pass brings them in as the pseudo-mode.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <sstream>

#include "support/model_fixture.h"
#include "tools/shear_building.h"

namespace tremodal {
namespace {

using testing::BytesF32;
using testing::Exists;
using testing::ReadFile;
using testing::ResponseFile;
using testing::WriteFile;

constexpr double kAcceleration = 0.3 * 9.81;  // flat curve in g, options' curve factor
constexpr int kStoreys = 5;
constexpr double kMass = 1000;

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

std::vector<std::string> Fields(const std::string& line) {
    std::vector<std::string> fields;
    std::istringstream in(line);
    for (std::string field; std::getline(in, field, ',');) fields.push_back(field);
    return fields;
}

struct MissingMassModel : testing::ExampleModel {
    const std::string& path = modelPath;

    // The five-storey building with its four lowest modes, damped 2, 3, 4
    // and 6 %, a flat curve whose first point is the ZPA period 0.03 s,
    // directions 1 and 3 on, missing mass on from case 10.
    MissingMassModel() : ExampleModel("--spectrum flat --modes 4") {
        WriteFile(path + ".URS1", "0.03,0.3\r\n10,0.3\r\n-1\r\n");
        WriteFile(path + ".USD1", "1,0.02\r\n2,0.03\r\n3,0.04\r\n4,0.06\r\n-1\r\n");
        testing::EditOptions(path, "1", [](ResponseOptions& o) {
            o.MissMassOn = 1;
            o.MissMassStartCase = "10";
        });
    }

    // The suite's solver on a load case of the building: the storey shears
    // from the top down, the drifts by the storey stiffness, the floor
    // displacements from the base up. Writes the .R file of the case.
    std::vector<double> Solve(const std::string& caseNo, int column, double stiffness, int freedom) const {
        std::map<int, double> loads;  // by node
        for (const std::string& line : Lines(ReadFile(path + ".L" + caseNo))) {
            if (line.rfind("NF,", 0) != 0) continue;
            const std::vector<std::string> f = Fields(line);
            loads[std::stoi(f.at(1))] = std::stod(f.at(column));
        }
        std::vector<double> u(kStoreys + 1, 0.0);
        double shear = 0;
        std::vector<double> storeyShear(kStoreys + 2, 0.0);
        for (int floor = kStoreys; floor >= 1; --floor) {
            shear += loads[example::FloorNode(example::ShearBuilding{}, floor)];
            storeyShear[floor] = shear;
        }
        for (int floor = 1; floor <= kStoreys; ++floor)
            u[floor] = u[floor - 1] + storeyShear[floor] / stiffness;
        std::string bytes(24, 'h');
        for (int node = 1; node <= kStoreys + 1; ++node) {
            for (int k = 1; k <= 6; ++k) {
                bytes += BytesF32(node > 1 && k == freedom ? float(u[node - 1]) : 0.0f);
            }
        }
        WriteFile(path + ".R" + caseNo, bytes);
        return u;
    }

    double TotalLoad(const std::string& caseNo, int column) const {
        double total = 0;
        for (const std::string& line : Lines(ReadFile(path + ".L" + caseNo))) {
            if (line.rfind("NF,", 0) == 0) total += std::stod(Fields(line).at(column));
        }
        return total;
    }
};

TEST(MissingMass, TwoPassesWithTheSolverBetween) {
    MissingMassModel model;
    const std::string& p = model.path;

    // First pass: one load case per translational direction that is on.
    ASSERT_EQ(model.Run("1/20/1/").status, 0);
    EXPECT_TRUE(Exists(model.dir.File("casepost.out")));
    EXPECT_TRUE(Exists(p + ".L10"));
    EXPECT_FALSE(Exists(p + ".L11"));
    EXPECT_TRUE(Exists(p + ".L12"));
    EXPECT_FALSE(Exists(p + ".L20"));  // no results case yet
    EXPECT_EQ(ReadFile(p + ".C0"),
              " 2 \r\n10             1 \r\n12             1 \r\nMissing Mass Run Comb\r\n");

    const std::vector<std::string> head = Lines(ReadFile(p + ".L12"));
    ASSERT_GE(head.size(), 11u);
    EXPECT_EQ(head[0], "REFORMAT");
    EXPECT_EQ(head[1], "MODEL,SHEAR");
    EXPECT_EQ(head[3], "LCASE,10");  // the first case of the set, in every file
    EXPECT_EQ(head[4], "LDESC,SpectResp 1:FrqCase 1 Missing Mass");
    EXPECT_EQ(head[7], "ACOM,");
    EXPECT_EQ(head[8], "ACOM, Seismic Response Spectrum Analysis");
    EXPECT_EQ(head[9], "ACOM, Missing Mass Case");
    // Lumped mass at angle 0: x loads have a "0" z column, each floor a line.
    const std::vector<std::string> xLoads = Lines(ReadFile(p + ".L10"));
    ASSERT_EQ(xLoads.size(), 10u + kStoreys);
    EXPECT_EQ(xLoads[10].substr(0, 5), "NF,2,");
    EXPECT_EQ(xLoads[10].substr(xLoads[10].size() - 3), ",,0");

    // The load is the mass the four modes leave out at the ZPA, times the
    // direction factor (1 for x, 0.7 for z in these options).
    const double keptX =
        example::EffectiveMass(kStoreys, kMass, 1) + example::EffectiveMass(kStoreys, kMass, 2);
    const double expectedX = (kStoreys * kMass - keptX) * kAcceleration;
    EXPECT_NEAR(model.TotalLoad("10", 2), expectedX, 2e-5 * kStoreys * kMass * kAcceleration);
    EXPECT_NEAR(model.TotalLoad("12", 4), 0.7 * expectedX, 2e-5 * kStoreys * kMass * kAcceleration);

    // The load case list knows them as load cases to be solved.
    const std::string list = ReadFile(p + ".NSL");
    ASSERT_GE(list.size(), 13u * 86);
    EXPECT_EQ(list.substr(10 * 86 + 1, 3), std::string("\1\0\0", 3));
    EXPECT_EQ(list.substr(12 * 86 + 16, 36), "SpectResp 1:FrqCase 1 Missing Mass  ");
    EXPECT_EQ(list.substr(11 * 86, 86), std::string(86, '\0'));

    // The solver.
    const std::vector<double> ux = model.Solve("10", 2, 1.0e6, 1);
    model.Solve("12", 4, 1.5e6, 3);

    // Second pass: each direction's response file gets the pseudo-mode,
    // at the frequency of the curve's first point and damped as mode 1.
    EXPECT_OUTCOME(model, model.Run("1/20/2/"), testing::RanOn(""));
    for (const char* suffix : {".HS1", ".HS3"}) {
        const ResponseFile hs(p + suffix);
        ASSERT_EQ(hs.Rows(), 5) << suffix;
        ASSERT_EQ(hs.bytes.size(), hs.Size()) << suffix;
        EXPECT_EQ(hs.Omega(5), float(6.283185 / double(0.03f))) << suffix;
        EXPECT_EQ(hs.Damping(4), 0.06f) << suffix;
        EXPECT_EQ(hs.Damping(5), 0.02f) << suffix;
    }
    const ResponseFile hs1(p + ".HS1");
    for (int floor = 1; floor <= kStoreys; ++floor) {
        EXPECT_EQ(hs1.Value(5, example::FloorNode(example::ShearBuilding{}, floor), 1), float(ux[floor]))
            << "floor " << floor;
    }
    const std::string results = ReadFile(p + ".L20");
    EXPECT_NE(results.find("ACOM,   St Load Case          10          11          12\r\n"),
              std::string::npos);
    EXPECT_NE(results.find("ACOM,   Total Loads  "), std::string::npos);

    // A solved case that went missing: that direction goes on without its
    // pseudo-mode, the other keeps its own.
    std::remove((p + ".R12").c_str());
    EXPECT_OUTCOME(model, model.Run("1/20/2/"),
                   testing::RanOn("TREMODAL: Missing Mass Case 12 Results not found or invalid\n"));
    EXPECT_EQ(ResponseFile(p + ".HS1").Rows(), 5);
    EXPECT_EQ(ResponseFile(p + ".HS3").Rows(), 4);
}

}  // namespace
}  // namespace tremodal
