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
        std::istringstream in(text);
        bool barLines = false;
        for (std::string line; std::getline(in, line);) {
            int element, i, j;
            double x, y, z;
            if (line[0] == '*') barLines = line.rfind("*ELEMENT, TYPE=T3D2", 0) == 0;
            if (barLines && std::sscanf(line.c_str(), "%d, %d, %d", &element, &i, &j) == 3)
                bars.emplace_back(i, j);
            if (!barLines && std::sscanf(line.c_str(), "%d, %lf, %lf, %lf", &i, &x, &y, &z) == 4)
                nodes[i] = {x, y, z};
        }
    }

    // K u = F over the free nodes 5..12 by Gaussian elimination; u by node,
    // deck axes.
    std::map<int, std::array<double, 3>> Solve(const std::map<int, std::array<double, 3>>& loads) const {
        const int n = 24;
        std::vector<std::vector<double>> a(n, std::vector<double>(n + 1, 0.0));
        const auto row = [](int node, int k) { return 3 * (node - 5) + k; };
        for (const auto& [i, j] : bars) {
            std::array<double, 3> d{};
            double length = 0;
            for (int k = 0; k < 3; ++k) {
                d[k] = nodes.at(j)[k] - nodes.at(i)[k];
                length += d[k] * d[k];
            }
            length = std::sqrt(length);
            for (int p : {i, j})
                for (int q : {i, j})
                    for (int k = 0; k < 3 && p >= 5 && q >= 5; ++k)
                        for (int l = 0; l < 3; ++l)
                            a[row(p, k)][row(q, l)] += (p == q ? 1 : -1) * kAxialStiffness / length * d[k] *
                                                       d[l] / (length * length);
        }
        for (const auto& [node, f] : loads)
            for (int k = 0; k < 3; ++k) a[row(node, k)][n] += f[k];
        for (int c = 0; c < n; ++c) {
            for (int r = c + 1; r < n; ++r) {
                const double factor = a[r][c] / a[c][c];
                for (int k = c; k <= n; ++k) a[r][k] -= factor * a[c][k];
            }
        }
        std::vector<double> u(n);
        for (int r = n - 1; r >= 0; --r) {
            double sum = a[r][n];
            for (int k = r + 1; k < n; ++k) sum -= a[r][k] * u[k];
            u[r] = sum / a[r][r];
        }
        std::map<int, std::array<double, 3>> byNode;
        for (int node = 5; node <= 12; ++node)
            byNode[node] = {u[row(node, 0)], u[row(node, 1)], u[row(node, 2)]};
        return byNode;
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

float F32At(const std::string& bytes, std::size_t at) {
    float value;
    std::memcpy(&value, bytes.data() + at, 4);
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
    ASSERT_EQ(w.TremCcx("solve deck.inp M --vertical z"), 0) << w.err;
    EXPECT_TRUE(std::filesystem::is_empty(w.dir.File("tmp")));
    const testing::ProgramRun second = testing::RunTreModal(w.dir.Path(), "1/20/2/");
    ASSERT_EQ(second.status, 0) << second.err;
    EXPECT_EQ(second.err, "");

    const int nodes = 12;
    for (int d = 1; d <= 3; ++d) {
        SCOPED_TRACE("direction " + std::to_string(d));
        const std::string c = std::to_string(9 + d);
        const auto loads = DeckLoads(ReadFile(w.File(".L" + c)));
        ASSERT_FALSE(loads.empty());
        std::string steps = "*STEP\n*STATIC\n*CLOAD\n";
        for (const auto& [node, f] : loads)
            for (int k = 0; k < 3; ++k)
                if (f[k] != 0)
                    steps += std::to_string(node) + ", " + std::to_string(k + 1) + ", " +
                             ccx::DeckNumber(f[k]) + "\n";
        w.Ccx(tower.text, steps + "*NODE FILE\nU\n*END STEP\n", "case" + c);
        const auto frd = ccx::ReadFrdDisplacements(ReadFile(w.dir.File("case" + c + "/case" + c + ".frd")));
        ASSERT_EQ(frd.size(), 1u);
        const auto solved = tower.Solve(loads);

        // The solved case: 24 bytes, then six singles a node, suite axes.
        const std::string r = ReadFile(w.File(".R" + c));
        ASSERT_EQ(r.size(), 24u + 24u * nodes);
        double largest = 0;
        for (const auto& [node, u] : solved)
            for (double v : u) largest = std::max(largest, std::fabs(v));
        const int axis[3] = {0, 2, 1};
        const double sign[3] = {1, 1, -1};
        for (int n = 1; n <= nodes; ++n) {
            for (int k = 0; k < 6; ++k) {
                const float written = F32At(r, 24 + 24 * (n - 1) + 4 * k);
                const double fromFrd = k < 3 ? sign[k] * frd[0].at(n)[axis[k]] : 0.0;
                EXPECT_NEAR(written, fromFrd, 1e-5 * largest) << "node " << n << " freedom " << k + 1;
            }
        }

        // The second pass's pseudo-mode: the last block of the modal response
        // file, by equation, against the static solution.
        const std::string hs = ReadFile(w.File(".HS" + std::to_string(d)));
        std::int32_t rows;
        std::memcpy(&rows, hs.data() + 6, 4);
        ASSERT_EQ(rows, 5);
        const std::size_t block = 16 + 8 * std::size_t(rows) + 48 * nodes * std::size_t(rows - 1);
        ASSERT_EQ(hs.size(), block + 48 * nodes);
        int checked = 0;
        for (int n = 5; n <= nodes; ++n) {
            for (int k = 0; k < 3; ++k) {
                std::int32_t equation;
                std::memcpy(&equation, hs.data() + block + 48 * (n - 1) + 8 * k, 4);
                if (equation == 0) continue;
                ++checked;
                EXPECT_NEAR(F32At(hs, block + 48 * (n - 1) + 8 * k + 4), sign[k] * solved.at(n)[axis[k]],
                            1e-5 * largest)
                    << "node " << n << " freedom " << k + 1;
            }
        }
        EXPECT_EQ(checked, 24);
    }
}

}  // namespace
}  // namespace tremodal::ccxtest
