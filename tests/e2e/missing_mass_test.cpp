// A missing mass analysis as an engineer runs it from the batch tool: the
// first pass writes the load cases and the run comb, the suite's solver
// (standing in here) leaves the solved cases, and the second pass brings
// them in as the pseudo-mode.
#include <gtest/gtest.h>

#include <cstdio>
#include <sstream>

#include "support/model_fixture.h"
#include "tools/shear_building.h"

namespace tremodal {
namespace {

using namespace testing;

// The sum of one column of a load case's node force lines, and their count.
std::pair<double, int> Loads(const std::string& path, int column) {
    std::istringstream in(ReadFile(path));
    double total = 0;
    int lines = 0;
    for (std::string line; std::getline(in, line);) {
        if (!line.starts_with("NF,")) continue;
        ++lines;
        std::istringstream fields(line);
        std::string field;
        for (int k = 0; k <= column; ++k) std::getline(fields, field, ',');
        total += std::stod(field);
    }
    return {total, lines};
}

// The five-storey building with its four lowest modes, damped 2, 3, 4 and
// 6 %, a flat curve of 0.3 g whose first point is the ZPA period 0.03 s,
// directions 1 and 3 on, missing mass on from case 10.
TEST(MissingMass, TwoPassesWithTheSolverBetween) {
    const testing::ExampleModel model("--spectrum flat --modes 4");
    const std::string p = model.modelPath;
    WriteFile(p + ".URS1", "0.03,0.3\r\n10,0.3\r\n-1\r\n");
    WriteFile(p + ".USD1", "1,0.02\r\n2,0.03\r\n3,0.04\r\n4,0.06\r\n-1\r\n");
    testing::EditOptions(p, "1", [](ResponseOptions& o) {
        o.MissMassOn = 1;
        o.MissMassStartCase = "10";
    });

    // First pass: one load case per translational direction that is on.
    ASSERT_EQ(model.Run("1/20/1/").status, 0);
    EXPECT_TRUE(Exists(model.dir.File("casepost.out")));
    EXPECT_FALSE(Exists(p + ".L11"));
    EXPECT_FALSE(Exists(p + ".L20"));  // no results case yet
    EXPECT_EQ(ReadFile(p + ".C0"),
              " 2 \r\n10             1 \r\n12             1 \r\nMissing Mass Run Comb\r\n");
    const std::string head = ReadFile(p + ".L12");
    EXPECT_TRUE(head.starts_with("REFORMAT\r\nMODEL,SHEAR\r\n")) << head;
    // The first case of the set, in every file.
    EXPECT_NE(head.find("\r\nLCASE,10\r\nLDESC,SpectResp 1:FrqCase 1 Missing Mass\r\n"), std::string::npos);
    EXPECT_NE(
        head.find("\r\nACOM,\r\nACOM, Seismic Response Spectrum Analysis\r\nACOM, Missing Mass Case\r\n"),
        std::string::npos);
    // The load is the mass the four modes (x1, z1, x2, z2) leave out at the
    // ZPA, times the direction factor (1 for x, 0.7 for z): a line a floor.
    const double all = 5 * 1000.0, acceleration = 0.3 * 9.81;
    const double x =
        (all - example::EffectiveMass(5, 1000, 1) - example::EffectiveMass(5, 1000, 2)) * acceleration;
    for (const auto& [file, column, factor] : {std::tuple{".L10", 2, 1.0}, {".L12", 4, 0.7}}) {
        const auto [total, lines] = Loads(p + file, column);
        EXPECT_NEAR(total, factor * x, 2e-5 * all * acceleration) << file;
        EXPECT_EQ(lines, 5) << file;
    }
    // The load case list knows them as load cases to be solved.
    const std::string list = ReadFile(p + ".NSL");
    ASSERT_GE(list.size(), 13u * 86);
    EXPECT_EQ(list.substr(10 * 86 + 1, 3), std::string("\1\0\0", 3));
    EXPECT_EQ(list.substr(12 * 86 + 16, 36), "SpectResp 1:FrqCase 1 Missing Mass  ");
    EXPECT_EQ(list.substr(11 * 86, 86), std::string(86, '\0'));

    // The solver: 24 bytes of header, then the six freedoms of each node.
    for (const auto& [solved, freedom] : {std::pair{".R10", 1}, {".R12", 3}}) {
        std::string bytes(24, 'h');
        for (int node = 1; node <= 6; ++node) {
            for (int k = 1; k <= 6; ++k)
                bytes += testing::BytesF32(k == freedom ? 0.001f * float(node - 1) : 0.0f);
        }
        WriteFile(p + solved, bytes);
    }
    // Second pass: each direction's response file gets the pseudo-mode, at
    // the frequency of the curve's first point and damped as mode 1.
    EXPECT_OUTCOME(model, model.Run("1/20/2/"), testing::RanOn(""));
    for (const auto& [suffix, freedom] : {std::pair{".HS1", 1}, {".HS3", 3}}) {
        const ResponseFile hs(p + suffix);
        ASSERT_EQ(hs.Rows(), 5) << suffix;
        ASSERT_EQ(hs.bytes.size(), hs.Size()) << suffix;
        EXPECT_EQ(hs.Omega(5), float(6.283185 / double(0.03f))) << suffix;
        EXPECT_EQ(hs.Damping(4), 0.06f) << suffix;
        EXPECT_EQ(hs.Damping(5), 0.02f) << suffix;
        for (int floor = 1; floor <= 5; ++floor) {
            const int node = example::FloorNode(example::ShearBuilding{}, floor);
            EXPECT_EQ(hs.Value(5, node, freedom), 0.001f * float(node - 1)) << suffix << floor;
        }
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
