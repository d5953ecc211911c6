// Where a numeric fault of the analysis is raised. The long sums and the
// responses are worked out in bulk, side by side and on several threads, and
// unchecked; a fault must still come out as the first one the suite's own
// order of operations meets, with its value in the message, and before any
// file of the direction is touched.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/binary_files.h"
#include "base/wide_registers.h"
#include "base/worker_threads.h"
#include "modal/modal_response.h"
#include "modal/participation.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

const f32 k2p100 = std::ldexp(1.0f, 100), k2p126 = std::ldexp(1.0f, 126), k2p127 = std::ldexp(1.0f, 127);
const std::string k2p128 = "overflow: 3.40282366920938E+38 does not fit a single";
const std::string k2p130 = "overflow: 1.36112946768375E+39 does not fit a single";
const std::string k2p140 = "overflow: 1.39379657490816E+42 does not fit a single";

// One node whose first freedoms are equations 1 to dof, unit masses and
// excitation, and the given shapes.
struct TinyRun {
    testing::TempDir dir;
    RunState s;

    TinyRun(i32 dof, const std::vector<std::vector<f32>>& shapes) {
        s.Model.NumNodes = 1, s.Model.ModelPath = dir.File("FRAME");
        s.Freq.NumDof = dof, s.Freq.NumModes = i32(shapes.size()), s.Freq.MassForm = 1;
        AllocateRunArrays(s);
        s.Freq.MassTerms.Allocate(dof);
        for (i32 e = 1; e <= dof; ++e) {
            if (e <= 6) s.Freq.NodeDof(1, e) = e;
            s.Freq.MassTerms(e) = s.Excitation(e) = 1;
        }
        for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
            s.Freq.Omega(m) = s.Curve.ModalSpectrum(m) = s.Participation(m) = 1;
            for (i32 e = 1; e <= dof; ++e) {
                const f32 v = s.Freq.ModeShape(e, m) = shapes[std::size_t(m - 1)][std::size_t(e - 1)];
                s.Freq.ShapePeak(m) = std::max(s.Freq.ShapePeak(m), std::fabs(v));
            }
        }
        s.Options.DirFactor(1) = 1;
    }
};

// Participation: mode 1 reaches 2^128 at its third equation while mode 2
// already overflows at its second, and mode 1 is summed first; the last mode
// of the second group of 16 summed side by side; of two groups that
// overflow, the first. The residual mass runs
// equation by equation: mode 2's term overflows at equation 1, mode 1's
// square at equation 2; then the last equation alone. The responses run
// over the modes of one equation before the next: mode 1 overflows at
// equation 2, mode 2 at equation 1. The acceleration is the displacement
// times omega twice: at the first equation, and past it with a negative
// scale, where the displacement -2^100 fits and the acceleration -2^140 does
// not.
TEST(NumericFaults, EachFaultIsTheFirstInTheSuitesOrderOnAnyNumberOfThreads) {
    enum Step { kParticipation, kResidualMass, kResponses };
    std::vector<std::vector<f32>> group(32, {1, 1}), twoGroups(32, {1, 1});
    group[31] = {k2p127, k2p127};
    twoGroups[4] = {k2p127, k2p127}, twoGroups[19] = {1.5f * k2p127, 1.5f * k2p127};
    const f32 k2p65 = std::ldexp(1.0f, 65), k2p70 = std::ldexp(1.0f, 70);
    const std::string k2m140 = "overflow: -1.39379657490816E+42 does not fit a single";
    // clang-format off
    const struct { Step step; std::vector<std::vector<f32>> shapes; std::string message;
                   f32 gamma1 = 1, gamma2 = 1, omega = 1; } cases[] = {
        {kParticipation, {{k2p127, k2p126, k2p126}, {1.5f * k2p127, 1.5f * k2p127, 0}}, k2p128},
        {kParticipation, group, k2p128}, {kParticipation, twoGroups, k2p128},
        {kResponses, {{k2p126}}, k2p128, 1, 1, 2},
        {kResidualMass, {{1, k2p70}, {k2p65, 1}}, k2p130}, {kResidualMass, {{1, 1, k2p70}}, k2p140},
        {kResponses, {{1, k2p127}, {k2p126, 1}}, k2p130, 4, 16},
        {kResponses, {{1, k2p100}}, k2m140, -1, 1, std::ldexp(1.0f, 20)},
    };
    // clang-format on
    for (const auto& c : cases) {
        for (const int threads : {1, 3}) {
            for (const bool wide : {false, true}) {
                SetWorkerThreads(threads), SetSmallShares(threads > 1), AllowWideRegisters(wide);
                TinyRun run(i32(c.shapes[0].size()), c.shapes);
                run.s.Participation(1) = c.gamma1, run.s.Freq.Omega(1) = c.omega;
                run.s.Options.MissMassOn = c.step == kResidualMass;
                if (c.shapes.size() > 1) run.s.Participation(2) = c.gamma2;
                const auto step = [&] {
                    if (c.step == kResponses) ComputeModalResponse(run.s, 1);
                    if (c.step != kResponses) ComputeParticipationLumped(run.s);
                };
                EXPECT_EQ(std::to_string(testing::FailureOf(step)) + " " + testing::MessageOf(step),
                          std::to_string(kOverflow) + " " + c.message)
                    << c.step << ", " << threads;
                EXPECT_FALSE(testing::Exists(run.s.Model.ModelPath + ".HS1"));
            }
        }
    }
    SetWorkerThreads(1), SetSmallShares(false), AllowWideRegisters(true);
}

TEST(NumericFaults, SumsAreSinglesRoundedOnEveryAdditionInTheSuitesOrder) {
    // Participation factors M phi r and the excited mass r^2 M over 40
    // masses, shapes and an excitation that are not round numbers, against
    // the sums worked out single by single; sums in double rounded once
    // differ.
    std::vector<std::vector<f32>> shapes(2);
    for (int e = 1; e <= 40; ++e)
        shapes[0].push_back(f32(std::sin(e))), shapes[1].push_back(f32(std::cos(e)));
    TinyRun run(40, shapes);
    f32 gamma[2] = {}, excited = 0;
    f64 wide[3] = {};
    for (i32 e = 1; e <= 40; ++e) {
        const f64 m = run.s.Freq.MassTerms(e) = 1.1f * f32(e);
        const f64 r = run.s.Excitation(e) = 0.3f + 0.7f * f32(e);
        for (i32 k = 1; k <= 2; ++k)
            gamma[k - 1] = f32(m * run.s.Freq.ModeShape(e, k) * r + gamma[k - 1]),
                      wide[k] += m * run.s.Freq.ModeShape(e, k) * r;
        excited = f32(r * r * m + excited), wide[0] += r * r * m;
    }
    ASSERT_TRUE(f32(wide[0]) != excited && f32(wide[2]) != gamma[1]);
    ComputeParticipationLumped(run.s);
    EXPECT_EQ(std::vector<f32>({run.s.Participation(1), run.s.Participation(2), run.s.ExcitedMass}),
              std::vector<f32>({gamma[0], gamma[1], excited}));
}

TEST(NumericFaults, ALargeShapePeakAloneStopsNothing) {
    // The peak of a mode may be a value that a later freedom of the same
    // equation replaced; the responses themselves fit, so the file is written:
    // the options' damping ratio in its header, the mode's omega and own
    // damping in its table, then the displacements.
    TinyRun run(2, {{0.5f, -0.25f}});
    run.s.Freq.ShapePeak(1) = k2p127, run.s.Participation(1) = 4, run.s.Options.DampingRatio = 0.05f;
    run.s.ModalDamping(1) = 0.07f;
    ComputeModalResponse(run.s, 1);
    const std::string bytes = testing::ReadFile(run.s.Model.ModelPath + ".HS1");
    ASSERT_EQ(bytes.size(), 16u + 8u + 48u);
    const auto at = [&](std::size_t offset) {
        return GetF32(reinterpret_cast<const unsigned char*>(&bytes[offset]));
    };
    EXPECT_EQ(std::vector<f32>({at(10), at(20), at(28), at(36), at(44)}),
              std::vector<f32>({0.05f, 0.07f, 2.0f, -1.0f, 0.0f}));
}

}  // namespace
}  // namespace tremodal
