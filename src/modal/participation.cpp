#include "modal/participation.h"

#include "runcontrol/checked_math.h"

namespace tremodal {

namespace {

// Gamma(m) for modes first..last, each a single rounded on every addition in
// ascending equation order. Four modes are summed side by side: the sums
// are independent, so their rounded additions overlap in the processor,
// and each still sees its terms in the same order.
void SumParticipation(RunState& s, i32 first, i32 last) {
    constexpr i32 kSideBySide = 4;
    const i32 dof = s.Freq.NumDof;
    const Array1<f32>& mass = s.Freq.MassTerms;
    const Array1<f32>& r = s.Excitation;
    i32 m = first;
    // A mass vector shorter than the equations fails at its end, in the
    // plain loop below.
    const bool whole = mass.Upper() >= dof && r.Upper() >= dof;
    for (; whole && m + kSideBySide - 1 <= last; m += kSideBySide) {
        const f32* phi[kSideBySide];
        f32 sum[kSideBySide] = {};
        for (i32 k = 0; k < kSideBySide; ++k) phi[k] = &s.Freq.ModeShape(0, m + k);
        (void)s.Freq.ModeShape(dof, m + kSideBySide - 1);
        for (i32 i = 1; i <= dof; ++i) {
            const f64 mi = mass.Data()[i];
            const f64 ri = r.Data()[i];
            for (i32 k = 0; k < kSideBySide; ++k) sum[k] = StoreF32(mi * phi[k][i] * ri + sum[k]);
        }
        for (i32 k = 0; k < kSideBySide; ++k) s.Participation(m + k) = sum[k];
    }
    for (; m <= last; ++m) {
        s.Participation(m) = 0;
        for (i32 i = 1; i <= dof; ++i) {
            s.Participation(m) = StoreF32(f64(mass(i)) * s.Freq.ModeShape(i, m) * r(i) + s.Participation(m));
        }
    }
}

// Participation factors of mass-normalised modes, Gamma(m) = sum M r phi,
// whose squares are the effective masses; and the residual mass of each
// equation, r^2 M less what the modes reach, which the missing mass method
// loads at the zero period acceleration. Every product is worked out in
// double and every running sum is a single rounded on each addition: the
// suite compares these bits. The mass of equation i is MassTerms(i) in both
// forms (the square form keeps only its diagonal).
void ComputeParticipation(RunState& s, bool countInI16) {
    const i32 dof = s.Freq.NumDof;
    const i32 modes = s.Freq.NumModes;
    const Array1<f32>& mass = s.Freq.MassTerms;
    const Array1<f32>& r = s.Excitation;

    SumParticipation(s, 1, modes);

    f32 residualSum = 1.0f;
    f32 effectiveSum = 0;
    if (s.Options.MissMassOn == 1) {
        // The lumped form counts its equations in 16 bits here.
        if (countInI16) NarrowI16(dof);
        // The mass each equation gives to the modes, A(i) = sum over m of
        // (M phi r)^2, each term rounded through ResidualWork. Summed mode
        // by mode down the contiguous shape columns, in ResidualMass; for
        // each equation the terms still add in ascending mode order.
        for (i32 i = 1; i <= dof; ++i) s.ResidualMass(i) = 0;
        for (i32 m = 1; m <= modes; ++m) {
            for (i32 i = 1; i <= dof; ++i) {
                s.ResidualWork(i) = StoreF32(f64(mass(i)) * s.Freq.ModeShape(i, m) * r(i));
                const f64 w = s.ResidualWork(i);
                s.ResidualMass(i) = StoreF32(w * w + s.ResidualMass(i));
            }
        }
        residualSum = 0;
        for (i32 i = 1; i <= dof; ++i) {
            const f64 ri = r(i);
            s.ResidualMass(i) = StoreF32(ri * ri * mass(i) - s.ResidualMass(i));
            residualSum = StoreF32(f64(residualSum) + s.ResidualMass(i));
        }
        for (i32 m = 1; m <= modes; ++m) {
            const f64 g = s.Participation(m);
            effectiveSum = StoreF32(g * g + effectiveSum);
        }
    }

    s.ExcitedMass = 0;
    for (i32 i = 1; i <= dof; ++i) {
        const f64 ri = r(i);
        s.ExcitedMass = StoreF32(ri * ri * mass(i) + s.ExcitedMass);
    }

    // With the missing mass on, factor x ResidualSum is the mass the modes
    // miss; off, the divisor is 1 and the factor is the excited mass.
    s.MissMassFactor = StoreF32(Div(f64(s.ExcitedMass) - effectiveSum, residualSum));
    s.MissMassBase = StoreF32(f64(s.MissMassFactor) * residualSum * s.Curve.ZpaValue);
}

}  // namespace

void ComputeParticipationSquare(RunState& s) { ComputeParticipation(s, false); }

void ComputeParticipationLumped(RunState& s) { ComputeParticipation(s, true); }

}  // namespace tremodal
