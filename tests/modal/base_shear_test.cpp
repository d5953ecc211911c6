#include "modal/base_shear.h"

#include <gtest/gtest.h>

#include <vector>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

class BaseShear : public ::testing::Test {
protected:
    // Modes of the given frequencies and damping, with unit participation,
    // unit direction factors and S = 1, so that A(m) = omega(m)^2.
    void Build(const std::vector<f32>& omegas, const std::vector<f32>& damping, i16 method) {
        s.Freq.NumModes = i32(omegas.size());
        s.Freq.NumDof = 1;
        AllocateRunArrays(s);
        for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
            s.Freq.Omega(m) = omegas[std::size_t(m) - 1];
            s.ModalDamping(m) = damping[std::size_t(m) - 1];
            s.Participation(m) = 1;
            s.Curve.ModalSpectrum(m) = 1;
        }
        for (i16 d = 1; d <= 6; ++d) s.Options.DirFactor(d) = 1;
        s.Options.CombMethod = method;
        s.Options.SingleMode = 0;
    }
    f32 Combine(i16 d = 1) {
        CombineBaseShear(s, d);
        return s.BaseShear(d);
    }
    // The correlation of two modes with shears a1, a2, from the double sum.
    f64 Rho(f64 a1, f64 a2) { return (f64(Combine()) - a1 * a1 - a2 * a2) / (2 * a1 * a2); }

    RunState s;
};

TEST_F(BaseShear, CqcCorrelationReferenceValues) {
    Build({10, 9}, {0.05f, 0.05f}, 1);
    EXPECT_NEAR(Rho(100, 81), 0.473, 5e-4);

    // 0.05 / 0.02 at r = 1.2, met both ways round in the double sum, and
    // the same with the damping exchanged between the modes.
    Build({10, 12}, {0.05f, 0.02f}, 1);
    EXPECT_NEAR(Rho(100, 144), 0.1108, 2e-4);
    Build({12, 10}, {0.02f, 0.05f}, 1);
    EXPECT_NEAR(Rho(144, 100), 0.1108, 2e-4);

    // Equal frequencies are fully correlated even without damping.
    Build({10, 10}, {0, 0}, 1);
    EXPECT_EQ(Combine(), 40000.0f);
    // Zero damping and distinct frequencies: no correlation, as SRSS.
    Build({3, 5}, {0, 0}, 1);
    EXPECT_EQ(Combine(), 81.0f + 625.0f);
    s.Options.CombMethod = 0;
    EXPECT_EQ(Combine(), 81.0f + 625.0f);
    // A negative damping product is no power of a real number.
    Build({3, 5}, {-0.05f, 0.05f}, 1);
    EXPECT_EQ(FailureOf([&] { Combine(); }), kInvalidArgument);
}

TEST_F(BaseShear, TenPercentGroupTakesEachPairOnItsOwn) {
    // (10 - 9) / 10 rounds to the single 0.1: in the group.
    Build({9, 10}, {0, 0}, 2);
    EXPECT_EQ(Combine(), 32761.0f);  // 81^2 + 2 x 81 x 100 + 100^2
    // 10.2 is out: 81^2 + A2^2 with A2 = 10.2^2 stored.
    Build({9, 10.2f}, {0, 0}, 2);
    EXPECT_EQ(Combine(), 17385.3203125f);
    // Modes 1 and 3 equal, mode 2 far from mode 1 between them: (1, 2) is
    // out, (1, 3) counts, and (2, 3) descends and passes with a negative x.
    Build({4, 8, 4}, {0, 0, 0}, 2);
    EXPECT_EQ(Combine(), 256.0f + 4096.0f + 256.0f + 2 * 16.0f * 16.0f + 2 * 64.0f * 16.0f);
}

TEST_F(BaseShear, DoubleSumWithDurationReferenceValues) {
    Build({10, 11}, {0.05f, 0.05f}, 3);
    s.Options.Duration = 10;
    EXPECT_NEAR(Rho(100, 121), 0.678, 5e-4);
    const f32 tenSeconds = Combine();
    s.Options.Duration = 0;  // taken as 10 s
    EXPECT_EQ(Combine(), tenSeconds);
    EXPECT_EQ(s.Options.Duration, 0.0f);
    s.Options.Duration = 20;
    EXPECT_NEAR(Rho(100, 121), 0.610, 5e-4);
    // Damping above 1 has no damped frequency.
    Build({10, 11}, {1.5f, 0.05f}, 3);
    EXPECT_EQ(FailureOf([&] { Combine(); }), kInvalidArgument);
}

TEST_F(BaseShear, SingleModeRotationsAndMethodRange) {
    // Mode 2: A = 0.5^2 x 2 x 3 x 4^2 = 24.
    for (i16 method = 0; method <= 4; ++method) {
        SCOPED_TRACE(method);
        Build({3, 4, 5}, {0.05f, 0.05f, 0.05f}, method);
        s.Participation(2) = 0.5f;
        s.Curve.ModalSpectrum(2) = 2;
        s.Options.DirFactor(1) = 3;
        s.Options.SingleMode = 2;
        EXPECT_EQ(Combine(), method == 4 ? 24.0f : 576.0f);
        // Rotations have no base shear, whatever their factor.
        s.Options.DirFactor(5) = 3;
        s.BaseShear(5) = 9;
        EXPECT_EQ(Combine(5), 0.0f);
    }
    Build({3, 4}, {0, 0}, 5);
    s.BaseShear(1) = 9;
    EXPECT_EQ(Combine(), 0.0f);
    s.Options.CombMethod = -1;
    EXPECT_EQ(Combine(), 0.0f);

    // ABS is a plain sum: a negative factor gives a negative total.
    Build({3, 4}, {0, 0}, 4);
    s.Options.DirFactor(2) = -0.5f;
    EXPECT_EQ(Combine(2), -12.5f);
    // No modes: 0 for every method.
    Build({}, {}, 1);
    EXPECT_EQ(Combine(), 0.0f);
}

}  // namespace
}  // namespace tremodal
