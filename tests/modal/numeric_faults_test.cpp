// Where a numeric fault of the analysis is raised. The long sums and the
// responses are worked out in bulk and unchecked; a fault must still come
// out as the first one the suite's own order of operations meets, with its
// value in the message, and before any file of the direction is touched.
#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "base/binary_files.h"
#include "modal/modal_response.h"
#include "modal/participation.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::MessageOf;
using testing::ReadFile;
using testing::TempDir;

const f32 k2p126 = std::ldexp(1.0f, 126);
const f32 k2p127 = std::ldexp(1.0f, 127);

// One node whose x and y freedoms are equations 1 and 2 (3 with a third
// equation on z), unit masses and excitation, and the given shapes.
struct TinyRun {
    TempDir dir;
    RunState s;

    TinyRun(i32 dof, const std::vector<std::vector<f32>>& shapes) {
        s.Model.NumNodes = 1;
        s.Model.ModelPath = dir.File("FRAME");
        s.Freq.NumDof = dof;
        s.Freq.NumModes = i32(shapes.size());
        s.Freq.MassForm = 1;
        AllocateRunArrays(s);
        s.Freq.MassTerms.Allocate(dof);
        for (i32 e = 1; e <= dof; ++e) {
            s.Freq.NodeDof(1, e) = e;
            s.Freq.MassTerms(e) = 1;
            s.Excitation(e) = 1;
        }
        for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
            s.Freq.Omega(m) = 1;
            s.Curve.ModalSpectrum(m) = 1;
            s.Participation(m) = 1;
            for (i32 e = 1; e <= dof; ++e) {
                const f32 v = shapes[std::size_t(m - 1)][std::size_t(e - 1)];
                s.Freq.ModeShape(e, m) = v;
                s.Freq.ShapePeak(m) = std::max(s.Freq.ShapePeak(m), std::fabs(v));
            }
        }
        s.Options.DirFactor(1) = 1;
    }
};

TEST(NumericFaults, ParticipationFailsInModeOrderThenEquationOrder) {
    // Mode 1 reaches 2^128 at its third equation; mode 2 already overflows
    // at its second. Mode 1 is summed first, so its sum is the one reported.
    TinyRun run(3, {{k2p127, k2p126, k2p126}, {1.5f * k2p127, 1.5f * k2p127, 0}});
    EXPECT_EQ(MessageOf([&] { ComputeParticipationLumped(run.s); }),
              "overflow: 3.40282366920938E+38 does not fit a single");

    // Without the overflow the bulk sums give what the rounded additions give.
    TinyRun fine(3, {{1.5f, 2.25f, -0.125f}, {0.1f, 0.2f, 0.3f}});
    ComputeParticipationLumped(fine.s);
    EXPECT_EQ(fine.s.Participation(1), 3.625f);
    EXPECT_EQ(fine.s.Participation(2), f32(f64(f32(f64(0.1f) + 0.2f)) + 0.3f));
}

TEST(NumericFaults, ResidualMassFailsInEquationOrderThenModeOrder) {
    // Mode 2's term overflows at equation 1, mode 1's square at equation 2:
    // the reached mass runs equation by equation, so equation 1 is first.
    TinyRun run(2, {{1, std::ldexp(1.0f, 70)}, {std::ldexp(1.0f, 65), 1}});
    run.s.Options.MissMassOn = 1;
    EXPECT_EQ(MessageOf([&] { ComputeParticipationLumped(run.s); }),
              "overflow: 1.36112946768375E+39 does not fit a single");
}

TEST(NumericFaults, ResponsesFailEquationByEquationBeforeAnyFileIsWritten) {
    // Mode 1 overflows at equation 2, mode 2 at equation 1: the responses run
    // over the modes of one equation before the next equation, so mode 2's
    // displacement at equation 1 is the fault.
    TinyRun run(2, {{1, k2p127}, {k2p126, 1}});
    run.s.Participation(1) = 4;
    run.s.Participation(2) = 16;
    EXPECT_EQ(MessageOf([&] { ComputeModalResponse(run.s, 1); }),
              "overflow: 1.36112946768375E+39 does not fit a single");
    EXPECT_FALSE(Exists(run.s.Model.ModelPath + ".HS1"));

    // The acceleration is the displacement times omega twice, checked too.
    TinyRun fast(1, {{k2p126}});
    fast.s.Freq.Omega(1) = 2;
    EXPECT_EQ(MessageOf([&] { ComputeModalResponse(fast.s, 1); }),
              "overflow: 3.40282366920938E+38 does not fit a single");
}

TEST(NumericFaults, ALargeShapePeakAloneStopsNothing) {
    // The peak of a mode may be a value that a later freedom of the same
    // equation replaced; the responses themselves fit, so the file is written.
    TinyRun run(2, {{0.5f, -0.25f}});
    run.s.Freq.ShapePeak(1) = k2p127;
    run.s.Participation(1) = 4;
    ComputeModalResponse(run.s, 1);
    const std::string bytes = ReadFile(run.s.Model.ModelPath + ".HS1");
    ASSERT_EQ(bytes.size(), 16u + 8u + 48u);
    const auto value = [&](int freedom) {
        return GetF32(reinterpret_cast<const unsigned char*>(bytes.data()) + 24 + 8 * (freedom - 1) + 4);
    };
    EXPECT_EQ(value(1), 2.0f);
    EXPECT_EQ(value(2), -1.0f);
    EXPECT_EQ(value(3), 0.0f);
}

}  // namespace
}  // namespace tremodal
