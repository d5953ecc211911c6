// A run works the same on one thread as on several: every file it writes is
// the same byte for byte, and a run that fails ends with the failure that
// the one-thread order meets first, its number, its log line and its words,
// even where a worker on a later mode or equation meets its own fault
// sooner. The model is a tower large enough that every part worked on
// threads is split: 72 modes (rows of the double sums, groups of modes),
// 432 equations (ranges of equations, blocks of the response files), all
// six directions, a square mass block, damping by mode and close modes. Three
// threads are asked for, more than a small machine has cores: the workers
// then take turns in ever new orders, which must change nothing.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <map>
#include <regex>
#include <string>
#include <vector>

#include "base/wide_registers.h"
#include "base/worker_threads.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::BytesF32;
using testing::BytesI16;
using testing::BytesI32;
using testing::FrequencyCaseData;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

using Files = std::map<std::string, std::string>;  // relative name: masked bytes

constexpr int kNodes = 81;  // node 1 is the restrained base
constexpr int kModes = 72;
constexpr int kMissMassCase = 10;
const char* const kMethods[] = {"SRSS", "CQC", "GROUP", "DSM", "ABS"};

// The threads of runs in this process, as they were before, once done.
// Several threads share out even the small work of this model, as they
// would the work of a large one, and use the wide registers where the
// processor has them; one thread keeps to the plain loops, so the two runs
// hold those against each other as well.
class ThreadCount {
public:
    explicit ThreadCount(int count) : saved_(WorkerThreads()), savedShares_(SmallShares()) {
        SetWorkerThreads(count);
        SetSmallShares(count > 1);
        AllowWideRegisters(count > 1);
    }
    ~ThreadCount() {
        SetWorkerThreads(saved_);
        SetSmallShares(savedShares_);
        AllowWideRegisters(true);
    }

private:
    int saved_;
    bool savedShares_;
};

// The real program's threads; several share out even small work.
std::string ThreadsEnvironment(int threads) {
    return "TREMODAL_THREADS=" + std::to_string(threads) + (threads > 1 ? " TREMODAL_SMALL_SHARES=1" : "");
}

// A node's translational mass, 1, 2 or 4: powers of two keep the products
// of the failure cases below exact.
double NodeMass(int node) { return double(1 << (node % 3)); }

// Mode shape values spread over -0.05 .. 0.05, the same in every run.
float NextShapeValue(std::uint64_t& state) {
    state = state * 6364136223846793005ull + 1442695040888963407ull;
    return float((double(state >> 40) / double(1 << 24) - 0.5) * 0.1);
}

// Nodes 2 to 81 carry their six freedoms in equations 1 to 432, except every
// fifth node, whose rotations have none. Every third mode lies 0.5 % above
// the one before, and mode 20 on mode 19 exactly: close modes weigh in the
// cross terms of CQC and DSM and make up the groups of GROUP.
FrequencyCaseData TowerCase() {
    FrequencyCaseData c;
    c.CaseNodes = kNodes;
    c.NodeDof.push_back({});
    for (int n = 2; n <= kNodes; ++n) {
        std::array<std::int32_t, 6> dof{};
        for (int k = 0; k < 6; ++k) {
            if (k >= 3 && n % 5 == 0) continue;
            dof[std::size_t(k)] = ++c.NumDof;
            c.Masses.push_back(k < 3 ? NodeMass(n) : 0.5);
        }
        c.NodeDof.push_back(dof);
    }
    c.MassForm = 0;
    c.OffDiagonal = 0.01;
    c.DirMass = {187, 187, 187, 0, 0, 0};
    double omega = 4;
    std::uint64_t state = 2026;
    for (int m = 1; m <= kModes; ++m) {
        omega += m % 3 == 0 ? 0.005 * omega : (m == 20 ? 0.0 : 0.4);
        c.Eigenvalues.push_back(omega * omega);
        std::vector<float> shape(std::size_t(c.NumDof) + 1, 0.0f);
        for (std::size_t e = 1; e < shape.size(); ++e) shape[e] = NextShapeValue(state);
        c.Shapes.push_back(shape);
    }
    return c;
}

std::size_t Eq(const FrequencyCaseData& c, int node, int freedom) {
    return std::size_t(c.NodeDof[std::size_t(node - 1)][std::size_t(freedom - 1)]);
}

// The tower's files beside MODEL.NAM, the frequency case as given: size,
// coordinates of nodes on a 4 x 3 grid rising 3 a level, the curve with the
// ZPA period 0.03 s first, damping of 2 to 5 % by mode (every fifth mode
// keeps the options' 5 %), options, and a stand-in casepost.
void WriteTower(const std::string& dir, const std::string& frequencyCase, int method, int angle,
                bool missingMass) {
    const std::string model = dir + "/TOWER";
    WriteFile(dir + "/MODEL.NAM", "\"" + model + "\",\"TOWER\"\r\n");
    WriteFile(model + ".XSZ", "\"VARNEK\"\r\nTOWER\r\n\"Tower\"\r\nx1\r\nx2\r\nx3\r\n5,0," +
                                  std::to_string(kNodes) +
                                  ",0\r\nt1\r\nt2\r\nt3\r\nt4\r\nt5\r\nt6\r\nt7\r\n1\r\n");
    std::string xyz, damping;
    for (int n = 1; n <= kNodes; ++n) {
        xyz += BytesI16(std::int16_t(n)) + BytesF32(2.5f * float(n % 4)) + BytesF32(3.0f * float(n / 12)) +
               BytesF32(1.5f * float(n % 3));
    }
    for (int m = 1; m <= kModes; ++m) {
        if (m % 5 != 0) damping += std::to_string(m) + ",0.0" + std::to_string(2 + m % 4) + "\r\n";
    }
    WriteFile(model + ".XYZ", xyz);
    WriteFile(model + ".USD1", damping + "-1\r\n");
    WriteFile(model + ".URS1", "0.03,0.35\r\n0.1,0.8\r\n0.5,0.8\r\n1,0.45\r\n3,0.15\r\n-1\r\n");
    WriteFile(model + ".H1", frequencyCase);
    // The fresh dialog's options with all six directions on, the datum off
    // the origin, and the angle, method and missing mass as given.
    WriteFile(model + ".USM1", testing::kFreshOptionsFile);
    testing::EditOptions(model, "1", [&](ResponseOptions& o) {
        for (int d = 1; d <= 6; ++d) o.DirOn(d) = 1;
        o.PrincipalAngle = angle;
        o.GroundX = 1;
        o.GroundZ = -2;
        o.CombMethod = i16(method);
        o.MissMassOn = missingMass ? 1 : 0;
        o.MissMassStartCase = std::to_string(kMissMassCase);
    });
    testing::WriteStandInCasepostIn(dir);
}

// The suite's solver between the two missing mass passes, standing in: the
// node displacements of the three translational cases, 24 bytes of header
// first.
void SolveMissingMassCases(const std::string& dir) {
    for (int d = 1; d <= 3; ++d) {
        std::string bytes(24, 'h');
        for (int n = 1; n <= kNodes; ++n) {
            for (int k = 1; k <= 6; ++k)
                bytes += BytesF32(n == 1 ? 0.0f : 1e-4f * float((7 * n + 3 * k + d) % 11 - 5));
        }
        WriteFile(dir + "/TOWER.R" + std::to_string(kMissMassCase + d - 1), bytes);
    }
}

Files FilesIn(const std::string& dir) {
    Files files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(dir)) {
        if (!entry.is_regular_file()) continue;
        const std::string name = std::filesystem::relative(entry.path(), dir).string();
        files[name] = testing::MaskedRunText(ReadFile(entry.path().string()), dir);
    }
    return files;
}

std::vector<std::string> Names(const Files& files) {
    std::vector<std::string> names;
    for (const auto& [name, bytes] : files) names.push_back(name);
    return names;
}

// The same names, and the same bytes in each; a file that differs is named
// with the first byte that does.
void ExpectSameFiles(const Files& oneThread, const Files& threeThreads) {
    ASSERT_EQ(Names(oneThread), Names(threeThreads));
    for (const auto& [name, bytes] : oneThread) {
        const std::string& other = threeThreads.at(name);
        if (bytes == other) continue;
        const auto at = std::mismatch(bytes.begin(), bytes.end(), other.begin(), other.end()).first;
        ADD_FAILURE() << name << " differs from byte " << (at - bytes.begin());
    }
}

struct InProcessFiles {
    Files firstPass, secondPass;
    std::vector<std::string> messages;
    // The combined base shears and missing mass loads of directions 1 to 3:
    // the files show them to four digits only.
    std::vector<f32> figures;
};

// Both passes of a missing mass analysis in this process on `threads`
// threads, the dialog's base shear block and accelerations file on.
InProcessFiles RunBothPassesInProcess(int method, int threads) {
    TempDir dir;
    WriteTower(dir.Path(), testing::FrequencyCaseBytes(TowerCase()), method, 30, true);
    ThreadCount count(threads);
    testing::InProcessRun run(dir.Path(), "1/20/1/");
    run.state.Options.ShowModalShear = 1;
    run.state.Options.CreateAccelFile = 1;
    run.Analyze();
    InProcessFiles files;
    files.firstPass = FilesIn(dir.Path());
    SolveMissingMassCases(dir.Path());
    run.state.RunPhase = 2;
    run.Analyze();
    files.secondPass = FilesIn(dir.Path());
    files.messages = run.host.Messages;
    for (int d = 1; d <= 3; ++d) {
        files.figures.push_back(run.state.BaseShear(d));
        files.figures.push_back(run.state.MissMassLoad(d));
    }
    return files;
}

// What the comparison relies on: each part of the run reached the files.
void ExpectEveryPartInTheFiles(const InProcessFiles& run) {
    for (int d = 1; d <= 6; ++d)
        EXPECT_EQ(run.secondPass.count("TOWER.SEA-" + std::to_string(d) + ".O.20"), 1u);
    for (const char* name : {"TOWER.L10", "TOWER.L11", "TOWER.L12", "TOWER.C0"}) {
        EXPECT_EQ(run.firstPass.count(name), 1u) << name;
    }
    EXPECT_NE(run.secondPass.at("TOWER.L20").find("ACOM,Base Shear Components due to Translational Motion"),
              std::string::npos);
    // The pseudo-mode of the solved case is the last row of each translation.
    EXPECT_EQ(testing::ResponseFile::Of(run.secondPass.at("TOWER.HS1")).Rows(), kModes + 1);
    EXPECT_EQ(testing::ResponseFile::Of(run.secondPass.at("TOWER.HS4")).Rows(), kModes);
}

TEST(ThreadCount, SameFilesWithOneThreadAndSeveral) {
    for (int method = 0; method <= 4; ++method) {
        SCOPED_TRACE(kMethods[method]);
        const InProcessFiles one = RunBothPassesInProcess(method, 1);
        const InProcessFiles three = RunBothPassesInProcess(method, 3);
        ExpectEveryPartInTheFiles(one);
        ExpectSameFiles(one.firstPass, three.firstPass);
        ExpectSameFiles(one.secondPass, three.secondPass);
        EXPECT_EQ(one.messages, three.messages);
        EXPECT_EQ(one.figures, three.figures);
    }
}

// Both runs of the real program, on one thread and on three, of a tower
// whose case fails: the same status, files and words, and the log line of
// the failure's number.
// `pattern`, when given, is what standard error says after the log line.
void ExpectTheSameFailure(const std::string& frequencyCase, bool missingMass, int number,
                          const std::string& pattern) {
    Files files[2];
    std::string err[2];
    for (const int threads : {1, 3}) {
        TempDir dir;
        WriteTower(dir.Path(), frequencyCase, 1, 0, missingMass);
        const testing::ProgramRun run = testing::RunTreModal(dir.Path(), missingMass ? "1/20/1/" : "1/20/",
                                                             {.environment = ThreadsEnvironment(threads)});
        EXPECT_EQ(run.status, 1) << threads << " threads";
        files[threads / 3] = FilesIn(dir.Path());
        err[threads / 3] = testing::MaskedRunText(run.err, dir.Path());
    }
    ExpectSameFiles(files[0], files[1]);
    EXPECT_EQ(err[0], err[1]);
    EXPECT_TRUE(err[0].starts_with(testing::FailureLine(number, 102) + "\n")) << err[0];
    EXPECT_EQ(files[0]["TOWER.LOG"], testing::FailureLine(number, 102) + "\r\n");
    if (!pattern.empty()) {
        EXPECT_TRUE(std::regex_match(err[0].substr(err[0].find('\n') + 1), std::regex(pattern + "\n")))
            << err[0];
    }
}

// A pattern for the general text of a positive figure, its first three
// digits fixed.
std::string ThreeDigitsPattern(double x) {
    const int exponent = int(std::floor(std::log10(x)));
    const std::string digits = std::to_string(long(std::floor(x / std::pow(10.0, exponent - 2))));
    return digits.substr(0, 1) + "\\." + digits.substr(1) + "[0-9]*E\\+" + std::to_string(exponent);
}

// Leaves only mode m's z values, all of them `z`: the mode then moves
// nothing in directions 1 and 2, whose principal direction is at 0 degrees,
// and its faults wait for direction 3.
void OnlyZ(FrequencyCaseData& c, int m, float z) {
    std::vector<float>& shape = c.Shapes[std::size_t(m - 1)];
    std::fill(shape.begin(), shape.end(), 0.0f);
    for (int n = 2; n <= kNodes; ++n) shape[Eq(c, n, 3)] = z;
}

// The bytes of the case with the equation number of one freedom of one
// mode's block replaced.
std::string WithEquation(const FrequencyCaseData& c, int mode, int node, int freedom, std::int32_t equation) {
    std::string bytes = testing::FrequencyCaseBytes(c);
    const std::size_t block = 40 + 8 * c.Eigenvalues.size() + std::size_t(mode - 1) * kNodes * 48;
    bytes.replace(block + std::size_t(node - 1) * 48 + std::size_t(freedom - 1) * 8, 4, BytesI32(equation));
    return bytes;
}

TEST(ThreadCount, AFailureInALaterModeKeepsItsNumberAndRoute) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const struct {
        const char* what;
        std::function<std::string(FrequencyCaseData&)> damage;
        bool missingMass;
        int number;
        std::string pattern = "";
    } cases[] = {
        // Participation factors sum mode by mode, each over the equations in
        // order. Mode 40 reaches 2^127 + 2^127 = 2^128 at its last
        // equations; mode 70 overflows to -3 x 2^127 at its first, which
        // a worker on the later modes meets long before.
        {"participation sums of modes 40 and 70",
         [](FrequencyCaseData& c) {
             OnlyZ(c, 40, 0);
             OnlyZ(c, 70, 0);
             for (int n : {80, 81}) c.Shapes[39][Eq(c, n, 3)] = float(std::ldexp(1.0, 127) / NodeMass(n));
             for (int n : {2, 3})
                 c.Shapes[69][Eq(c, n, 3)] = float(-1.5 * std::ldexp(1.0, 127) / NodeMass(n));
             return testing::FrequencyCaseBytes(c);
         },
         false, 6},
        // The residual mass sums equation by equation, the modes in order
        // within each: equation 21 (node 5, z) reaches 2^64 in mode 70,
        // node 70's z reaches -2^65 as early as mode 5. Directions 1 and 2
        // wrote their load cases before.
        {"residual masses of equations 21 and 372",
         [](FrequencyCaseData& c) {
             c.Shapes[69][Eq(c, 5, 3)] = float(std::ldexp(1.0, 64) / NodeMass(5));
             c.Shapes[4][Eq(c, 70, 3)] = float(-std::ldexp(1.0, 65) / NodeMass(70));
             return testing::FrequencyCaseBytes(c);
         },
         true, 6},
        // Responses are checked equation by equation, the modes in order
        // within each: a rotation of 1e37, which no excitation moves, times
        // the z participation of its mode overflows at node 3 in mode 70 and
        // at node 78 in mode 5. Mode 70's period, about 0.26 s, lies on the
        // curve's flat top of 0.8 g: its response is 9.81 x 0.8 / omega^2
        // times its z participation 100 x 187, the factor 0.7 and 1e37.
        {"responses of node 3 in mode 70 and node 78 in mode 5",
         [](FrequencyCaseData& c) {
             OnlyZ(c, 5, 100);
             OnlyZ(c, 70, 100);
             c.Shapes[69][Eq(c, 3, 4)] = 1e37f;
             c.Shapes[4][Eq(c, 78, 6)] = -1e37f;
             return testing::FrequencyCaseBytes(c);
         },
         false, 6,
         "the analysis of <DIR>/TOWER\\.H1 with the options <DIR>/TOWER\\.USM1: overflow: " +
             ThreeDigitsPattern(9.81 * 0.8 / TowerCase().Eigenvalues[69] * 18700 * 0.7 * 1e37) +
             " does not fit a single"},
        // The shape block is read mode by mode in file order.
        {"a not-a-number in mode 10, a bad equation in mode 70",
         [&](FrequencyCaseData& c) {
             c.Shapes[9][Eq(c, 40, 3)] = nan;
             return WithEquation(c, 70, 3, 1, 9999);
         },
         false, 6},
        {"a bad equation in mode 10, a not-a-number in mode 70",
         [&](FrequencyCaseData& c) {
             c.Shapes[69][Eq(c, 3, 1)] = nan;
             return WithEquation(c, 10, 40, 3, 9999);
         },
         false, 9},
        // Every eigenvalue is rooted before the first mode shape is read: the
        // later mode's eigenvalue fails first.
        {"a not-a-number in mode 10, a negative eigenvalue in mode 70",
         [&](FrequencyCaseData& c) {
             c.Shapes[9][Eq(c, 40, 3)] = nan;
             c.Eigenvalues[69] = -400;
             return testing::FrequencyCaseBytes(c);
         },
         false, 5},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        FrequencyCaseData data = TowerCase();
        ExpectTheSameFailure(c.damage(data), c.missingMass, c.number, c.pattern);
    }
}

}  // namespace
}  // namespace tremodal
