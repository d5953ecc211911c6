// tremodal-ccx solve between TreModal's two missing mass passes, on a braced
// truss tower with point masses and Z vertical: the solved cases it writes
// hold the displacements ccx leaves in its .frd file for the same loads, and
// the second pass's pseudo-mode is the static solution worked out here from
// the bars' axial stiffness.
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

#include "ccx_workspace.h"

namespace tremodal::ccxtest {
namespace {

constexpr double kAxialStiffness = 2.1e11 * 1e-3;  // E A of every bar

// The tower of decks/tower.inp: its nodes and its bars.
struct Tower {
    std::string text = Deck("tower.inp");
    std::map<int, std::array<double, 3>> nodes;
    std::vector<std::pair<int, int>> bars;

    Tower() {
        for (const auto& node : ccx::ReadDeck(TREMODAL_SOURCE_DIR "/tests/ccx/decks/tower.inp").Nodes)
            nodes[node.Number] = node.At;
        std::istringstream in(text);
        bool barLines = false;
        for (std::string line; std::getline(in, line);) {
            int i, j;
            if (line[0] == '*') barLines = line.rfind("*ELEMENT, TYPE=T3D2", 0) == 0;
            if (barLines && std::sscanf(line.c_str(), "%*d, %d, %d", &i, &j) == 2) bars.emplace_back(i, j);
        }
    }

    // K u = F over the free nodes 5..12, deck axes: u[3 (node - 5) + axis].
    std::vector<double> Solve(const std::map<int, std::array<double, 3>>& loads) const {
        const int n = 24;
        std::vector<std::vector<double>> a(n, std::vector<double>(n + 1, 0.0));
        for (const auto& [i, j] : bars) {
            std::array<double, 3> d;
            for (int k = 0; k < 3; ++k) d[k] = nodes.at(j)[k] - nodes.at(i)[k];
            const double stiffness = kAxialStiffness / std::pow(std::hypot(d[0], d[1], d[2]), 3);
            for (int p : {i, j})
                for (int q : {i, j})
                    for (int k = 0; k < 3 && p >= 5 && q >= 5; ++k)
                        for (int l = 0; l < 3; ++l)
                            a[3 * (p - 5) + k][3 * (q - 5) + l] +=
                                (p == q ? 1 : -1) * stiffness * d[k] * d[l];
        }
        for (const auto& [node, f] : loads)
            for (int k = 0; k < 3 && node >= 5; ++k) a[3 * (node - 5) + k][n] += f[k];
        // Gauss-Jordan; the stiffness is positive definite: no pivoting.
        for (int c = 0; c < n; ++c)
            for (int r = 0; r < n; ++r)
                for (int k = n; k >= c && r != c; --k) a[r][k] -= a[r][c] / a[c][c] * a[c][k];
        std::vector<double> u(n);
        for (int r = 0; r < n; ++r) u[r] = a[r][n] / a[r][r];
        return u;
    }
};

// A load case file's node loads ("NF,node,Fx,Fy,Fz", suite axes) in deck
// axes: suite (x, y, z) is deck (X, Z, -Y).
std::map<int, std::array<double, 3>> DeckLoads(const std::string& text) {
    std::map<int, std::array<double, 3>> loads;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (line.rfind("NF,", 0) != 0) continue;
        std::vector<std::string> f;
        std::istringstream fields(line.substr(0, line.find('\r')) + ",,,");
        for (std::string field; std::getline(fields, field, ',');) f.push_back(field);
        const auto value = [&](int k) { return f[2 + k].empty() ? 0.0 : std::stod(f[2 + k]); };
        loads[std::stoi(f[1])] = {value(0), -value(2), value(1)};
    }
    return loads;
}

template <class T>
T At(const std::string& bytes, std::size_t at) {
    T value;
    std::memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

TEST(CcxSolve, SolvedCasesAreCcxsStaticSolutionAndTheSecondPassReadsThem) {
    if (!CcxInstalled()) GTEST_SKIP() << "ccx is not installed";
    const Tower tower;
    Workspace w;
    WriteFile(w.dir.File("deck.inp"), tower.text);
    ASSERT_EQ(w.TremCcx("modes deck.inp M --modes 4 --vertical z"), 0) << w.err;
    w.WriteOptions(true);
    const testing::ProgramRun first = testing::RunTreModal(w.dir.Path(), "1/20/1/");
    ASSERT_EQ(first.status, 0) << first.err;
    // ccx failing on the static cases: status 1, its files kept, no solved case written.
    ASSERT_EQ(w.TremCcx("solve deck.inp M --vertical z", "CCX=/bin/false"), 1);
    EXPECT_NE(w.err.find("ccx failed with exit status 1 on the static cases"), std::string::npos) << w.err;
    EXPECT_FALSE(testing::Exists(w.File(".R10")) || testing::Exists(w.File(".R10.tremodal-ccx")));
    for (const auto& kept : std::filesystem::directory_iterator(w.dir.File("tmp")))
        std::filesystem::remove_all(kept);
    ASSERT_EQ(w.TremCcx("solve deck.inp M --vertical z"), 0) << w.err;
    EXPECT_TRUE(std::filesystem::is_empty(w.dir.File("tmp")));
    const testing::ProgramRun second = testing::RunTreModal(w.dir.Path(), "1/20/2/");
    ASSERT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(second.err, "");

    for (int d = 1; d <= 3; ++d) {
        SCOPED_TRACE("direction " + std::to_string(d));
        const std::string c = std::to_string(9 + d);
        const auto loads = DeckLoads(ReadFile(w.File(".L" + c)));
        ASSERT_FALSE(loads.empty());
        std::string steps = "*STEP\n*STATIC\n*CLOAD\n";
        for (const auto& [node, f] : loads)
            for (int k = 0; k < 3; ++k)
                steps +=
                    std::to_string(node) + ", " + std::to_string(k + 1) + ", " + ccx::DeckNumber(f[k]) + "\n";
        w.Ccx(tower.text, steps + "*NODE FILE\nU\n*END STEP\n", "case" + c);
        const auto frd = ccx::ReadFrdDisplacements(ReadFile(w.dir.File("case" + c + "/case" + c + ".frd")));
        ASSERT_EQ(frd.size(), 1u);
        const auto solved = tower.Solve(loads);

        // The solved case: 24 bytes, then six singles a node, suite axes.
        const std::string r = ReadFile(w.File(".R" + c));
        ASSERT_EQ(r.size(), 24u + 24u * 12);
        double largest = 0;
        for (double v : solved) largest = std::max(largest, std::fabs(v));
        const int axis[3] = {0, 2, 1};
        const double sign[3] = {1, 1, -1};
        for (int n = 1; n <= 12; ++n)
            for (int k = 0; k < 6; ++k) {
                const float written = At<float>(r, 24 + 24 * (n - 1) + 4 * k);
                const double fromFrd = k < 3 ? sign[k] * frd[0].at(n)[axis[k]] : 0.0;
                EXPECT_NEAR(written, fromFrd, 1e-5 * largest) << "node " << n << " freedom " << k + 1;
            }

        // The second pass's pseudo-mode: the last block of the modal response
        // file, by equation, against the static solution.
        const std::string hs = ReadFile(w.File(".HS" + std::to_string(d)));
        const auto rows = At<std::int32_t>(hs, 6);
        ASSERT_EQ(rows, 5);
        const std::size_t block = 16 + 8 * std::size_t(rows) + 48 * 12 * std::size_t(rows - 1);
        ASSERT_EQ(hs.size(), block + 48 * 12);
        int checked = 0;
        for (int n = 5; n <= 12; ++n)
            for (int k = 0; k < 3; ++k) {
                if (At<std::int32_t>(hs, block + 48 * (n - 1) + 8 * k) == 0) continue;
                ++checked;
                EXPECT_NEAR(At<float>(hs, block + 48 * (n - 1) + 8 * k + 4),
                            sign[k] * solved[3 * (n - 5) + axis[k]], 1e-5 * largest)
                    << "node " << n << " freedom " << k + 1;
            }
        EXPECT_EQ(checked, 24);
    }
}

}  // namespace
}  // namespace tremodal::ccxtest
