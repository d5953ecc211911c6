#include "modal/participation.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <vector>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

std::uint32_t Bits(f32 x) { return std::bit_cast<std::uint32_t>(x); }

class Participation : public ::testing::Test {
protected:
    // Masses, excitation and shapes[m][i-1] of a model; lumped unless told.
    void Build(const std::vector<f32>& masses, const std::vector<f32>& r,
               const std::vector<std::vector<f32>>& shapes, i32 massForm = 1) {
        const i32 dof = i32(r.size());
        s.Freq.NumDof = dof;
        s.Freq.NumModes = i32(shapes.size());
        s.Freq.MassForm = massForm;
        AllocateRunArrays(s);
        s.Freq.MassCount = i32(masses.size());
        s.Freq.MassTerms.Allocate(massForm == 1 ? s.Freq.MassCount : dof);
        for (std::size_t i = 0; i < masses.size(); ++i) s.Freq.MassTerms(i32(i) + 1) = masses[i];
        for (i32 i = 1; i <= dof; ++i) s.Excitation(i) = r[std::size_t(i) - 1];
        for (std::size_t m = 0; m < shapes.size(); ++m) {
            for (i32 i = 1; i <= dof; ++i) s.Freq.ModeShape(i, i32(m) + 1) = shapes[m][std::size_t(i) - 1];
        }
        s.Curve.ZpaValue = 2.0f;
    }
    void Compute() {
        if (s.Freq.MassForm == 1) {
            ComputeParticipationLumped(s);
        } else {
            ComputeParticipationSquare(s);
        }
    }

    RunState s;
};

TEST_F(Participation, TwoMassExampleInBothForms) {
    for (const i32 form : {0, 1}) {
        SCOPED_TRACE(form);
        Build({2, 3}, {1, 1}, {{0.5f, 0.1f}}, form);
        s.Options.MissMassOn = 1;
        Compute();
        EXPECT_EQ(Bits(s.Participation(1)), 0x3fa66666u);  // 1.3
        EXPECT_EQ(s.ResidualMass(1), 1.0f);
        EXPECT_EQ(Bits(s.ResidualMass(2)), 0x403a3d71u);  // 2.91
        EXPECT_EQ(s.ResidualWork(2), f32(3.0 * f64(0.1f)));
        EXPECT_EQ(s.ExcitedMass, 5.0f);
        EXPECT_EQ(Bits(s.MissMassFactor), 0x3f58b754u);  // 0.84654737
        EXPECT_EQ(Bits(s.MissMassBase), 0x40d3d70bu);    // 6.62 = 3.31 x ZPA 2
    }
}

TEST_F(Participation, WithoutMissingMassTheFactorIsTheExcitedMass) {
    Build({2, 3}, {1, 1}, {{0.5f, 0.1f}});
    s.ResidualMass(1) = 7;
    Compute();
    EXPECT_EQ(s.MissMassFactor, 5.0f);
    EXPECT_EQ(s.MissMassBase, 10.0f);
    EXPECT_EQ(s.ResidualMass(1), 7.0f);  // untouched

    // A zero vector: no fault, since the divisor is 1.
    Build({2, 3}, {0, 0}, {{0.5f, 0.1f}});
    Compute();
    EXPECT_EQ(s.Participation(1), 0.0f);
    EXPECT_EQ(s.ExcitedMass, 0.0f);
    EXPECT_EQ(s.MissMassFactor, 0.0f);

    // With missing mass on, the zero vector divides by a zero residual sum.
    s.Options.MissMassOn = 1;
    EXPECT_EQ(FailureOf([&] { Compute(); }), kDivisionByZero);
}

TEST_F(Participation, RunningSumsRoundOnEveryAddition) {
    // 1 + 3e-8 + 3e-8 summed in double and rounded once is 1.0000001; rounded
    // on each addition it stays 1.
    Build({1, 3e-8f, 3e-8f}, {1, 1, 1}, {{1, 1, 1}});
    s.Options.MissMassOn = 1;
    Compute();
    EXPECT_EQ(s.Participation(1), 1.0f);
    EXPECT_EQ(s.ExcitedMass, 1.0f);

    // No modes: every equation keeps its whole mass as residual.
    Build({2, 3}, {1, 2}, {});
    s.Options.MissMassOn = 1;
    Compute();
    EXPECT_EQ(s.ResidualMass(1), 2.0f);
    EXPECT_EQ(s.ResidualMass(2), 12.0f);
    EXPECT_EQ(s.MissMassFactor, 1.0f);
    EXPECT_EQ(s.MissMassBase, 28.0f);
}

TEST_F(Participation, LumpedMassDataErrors) {
    // Fewer masses than equations: a subscript failure at the first without.
    Build({2}, {1, 1}, {{0.5f, 0.1f}});
    EXPECT_EQ(FailureOf([&] { Compute(); }), kSubscriptOutOfRange);

    // More than 32767 equations overflow the lumped form's 16-bit count, and
    // only with the missing mass on; the square form counts in 32 bits.
    const std::vector<f32> ones(32768, 1.0f), zeros(32768, 0.0f);
    Build(ones, ones, {zeros});
    EXPECT_EQ(FailureOf([&] { Compute(); }), 0);
    s.Options.MissMassOn = 1;
    EXPECT_EQ(FailureOf([&] { Compute(); }), kOverflow);
    s.Freq.MassForm = 0;
    EXPECT_EQ(FailureOf([&] { Compute(); }), 0);
}

}  // namespace
}  // namespace tremodal
