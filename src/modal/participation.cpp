#include "modal/participation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <memory>
#include <thread>
#include <vector>

#include "base/checked_math.h"
#include "base/worker_threads.h"
#include "modal/excitation.h"

namespace tremodal {

// The participation sums of the passes still to come, worked out ahead: for
// each, the excitation they were worked for, the sums of modes 1 to
// FirstAlone - 1, and from FirstAlone on the sums that are to be worked one
// by one, in order.
struct ParticipationAhead {
    struct Pass {
        Array1<f32> Excitation;
        std::vector<f32> Sums;
        i32 FirstAlone = 1;
        bool Ready = false;
    };
    std::vector<Pass> Passes;
    std::thread Worker;
};

namespace {

// Participation sums worked side by side: each is a chain of additions
// rounded to single, and independent chains overlap in the processor.
constexpr i32 kSideBySide = 16;
// Work is shared out among threads in runs of at least this many equations
// (or groups of modes over as many equations).
constexpr i32 kLeastEquations = 16384;
// The sums of the passes to come are worked out ahead, on a thread of their
// own, only above this many terms.
constexpr std::int64_t kLeastAhead = std::int64_t(1) << 22;

// w(i) = M(i) r(i) for every equation. M and r are singles, so the product
// is exact in a double, and w(i) phi(i, m) is the one rounding of the exact
// product M phi r: the same double as (M(i) phi(i, m)) r(i), the order the
// suite multiplies in. Empty when the mass vector is shorter than the
// equations; the plain sums then fail at the first equation without a mass.
std::vector<f64> MassTimesExcitation(const RunState& s, const Array1<f32>& r) {
    const i32 dof = s.Freq.NumDof;
    const Array1<f32>& mass = s.Freq.MassTerms;
    std::vector<f64> w;
    if (dof < 1 || mass.Upper() < dof || r.Upper() < dof) return w;
    w.resize(std::size_t(dof) + 1);
    for (i32 i = 1; i <= dof; ++i) w[std::size_t(i)] = f64(mass.Data()[i]) * r.Data()[i];
    return w;
}

// Gamma(m) = sum over i of M(i) phi(i, m) r(i), in ascending equation order,
// every addition stored as a single and checked.
void SumParticipation(RunState& s, i32 m) {
    const Array1<f32>& mass = s.Freq.MassTerms;
    const Array1<f32>& r = s.Excitation;
    s.Participation(m) = 0;
    for (i32 i = 1; i <= s.Freq.NumDof; ++i) {
        s.Participation(m) = StoreF32(f64(mass(i)) * s.Freq.ModeShape(i, m) * r(i) + s.Participation(m));
    }
}

// The same sums for up to kSideBySide modes from m on, unchecked, into
// sums(m) on. Returns false when a sum overflowed, leaving it to
// SumParticipation to fail there.
bool SumParticipationSideBySide(const RunState& s, const std::vector<f64>& w, i32 m, i32 count, f32* sums) {
    const i32 dof = s.Freq.NumDof;
    const f32* phi[kSideBySide];
    for (i32 k = 0; k < kSideBySide; ++k) {
        // A short group works its last mode in the spare lanes.
        const i32 mode = m + std::min(k, count - 1);
        phi[k] = s.Freq.ModeShape.Column(mode, dof);
    }
    f32 sum[kSideBySide] = {};
    for (i32 i = 1; i <= dof; ++i) {
        const f64 wi = w[std::size_t(i)];
#pragma GCC unroll 16
        for (i32 k = 0; k < kSideBySide; ++k) sum[k] = RoundToSingle(wi * phi[k][i] + sum[k]);
    }
    for (i32 k = 0; k < count; ++k) {
        if (!std::isfinite(sum[k])) return false;
    }
    for (i32 k = 0; k < count; ++k) sums[m + k] = sum[k];
    return true;
}

// The sums of every mode in groups side by side, each thread a run of
// groups, into sums(1..NumModes). Returns the mode from which the sums are
// to be worked one by one, checked, in order: the first of the first group
// that overflowed, or NumModes + 1.
i32 SumGroups(const RunState& s, const std::vector<f64>& w, f32* sums) {
    const i32 dof = s.Freq.NumDof;
    const i32 modes = s.Freq.NumModes;
    if (w.empty()) return 1;
    const i32 groups = (modes + kSideBySide - 1) / kSideBySide;
    std::vector<char> overflowed(std::size_t(groups) + 1, 0);
    overflowed[std::size_t(groups)] = 1;
    const i32 leastGroups = std::max(1, kLeastEquations / std::max(dof, 1));
    const bool summed = ForEachRange(0, groups - 1, leastGroups, [&](std::int64_t from, std::int64_t to) {
        for (std::int64_t g = from; g <= to; ++g) {
            const i32 first = i32(g) * kSideBySide + 1;
            if (SumParticipationSideBySide(s, w, first, std::min(kSideBySide, modes - first + 1), sums))
                continue;
            overflowed[std::size_t(g)] = 1;
            break;
        }
        return true;
    });
    if (!summed) return 1;
    const auto firstOverflow = std::find(overflowed.begin(), overflowed.end(), 1) - overflowed.begin();
    return std::min(i32(firstOverflow) * kSideBySide + 1, modes + 1);
}

// The mass each equation gives to the modes, A(i) = sum over m of w(i, m)^2
// with w = M phi r rounded through ResidualWork, and what is left of the
// equation's mass, ResidualMass(i) = r^2 M - A, summed into the result. In
// the suite's order: equation by equation, modes ascending within each.
f32 SumResidualMass(RunState& s) {
    const Array1<f32>& mass = s.Freq.MassTerms;
    const Array1<f32>& r = s.Excitation;
    f32 residualSum = 0;
    for (i32 i = 1; i <= s.Freq.NumDof; ++i) {
        f32 reached = 0;
        for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
            s.ResidualWork(i) = StoreF32(f64(mass(i)) * s.Freq.ModeShape(i, m) * r(i));
            const f64 work = s.ResidualWork(i);
            reached = StoreF32(work * work + reached);
        }
        const f64 ri = r(i);
        s.ResidualMass(i) = StoreF32(ri * ri * mass(i) - reached);
        residualSum = StoreF32(f64(residualSum) + s.ResidualMass(i));
    }
    return residualSum;
}

// The same, the reached mass summed mode by mode down the contiguous shape
// columns, unchecked: each equation's terms still add in ascending mode
// order. Falls back on SumResidualMass, which fails where the suite's order
// meets the first overflow, when a reached mass came out infinite.
f32 SumResidualMassByColumns(RunState& s, const std::vector<f64>& w) {
    const i32 dof = s.Freq.NumDof;
    if (w.empty() || s.ResidualMass.Upper() < dof || s.ResidualWork.Upper() < dof) return SumResidualMass(s);
    f32* reached = s.ResidualMass.Data();
    f32* work = s.ResidualWork.Data();
    // Each thread a run of equations, every equation's modes in order.
    const bool summed = ForEachRange(1, dof, kLeastEquations, [&](std::int64_t from, std::int64_t to) {
        std::fill(reached + from, reached + to + 1, 0.0f);
        for (i32 m = 1; m <= s.Freq.NumModes; ++m) {
            const f32* phi = s.Freq.ModeShape.Column(m, dof);
            for (std::int64_t i = from; i <= to; ++i) {
                work[i] = RoundToSingle(w[std::size_t(i)] * phi[i]);
                reached[i] = RoundToSingle(f64(work[i]) * work[i] + reached[i]);
            }
        }
        return true;
    });
    if (!summed || !std::all_of(reached + 1, reached + dof + 1, [](f32 a) { return std::isfinite(a); })) {
        return SumResidualMass(s);
    }
    const Array1<f32>& mass = s.Freq.MassTerms;
    const Array1<f32>& r = s.Excitation;
    f32 residualSum = 0;
    for (i32 i = 1; i <= dof; ++i) {
        const f64 ri = r(i);
        s.ResidualMass(i) = StoreF32(ri * ri * mass(i) - reached[i]);
        residualSum = StoreF32(f64(residualSum) + s.ResidualMass(i));
    }
    return residualSum;
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
    const std::vector<f64> w = MassTimesExcitation(s, r);

    // The sums of the pass, worked out ahead when they could be: those
    // stand when they were worked for this very excitation.
    i32 m = 0;
    if (ParticipationAhead* ahead = s.Ahead.get()) {
        if (ahead->Worker.joinable()) ahead->Worker.join();
        const std::size_t bytes = std::size_t(dof + 1) * sizeof(f32);
        for (ParticipationAhead::Pass& pass : ahead->Passes) {
            if (!pass.Ready || dof < 0 || pass.Excitation.Upper() < dof || r.Upper() < dof ||
                std::memcmp(pass.Excitation.Data(), r.Data(), bytes) != 0)
                continue;
            m = pass.FirstAlone;
            std::copy(pass.Sums.begin() + 1, pass.Sums.begin() + m, s.Participation.Data() + 1);
            pass.Ready = false;
            break;
        }
    }
    if (m == 0) m = SumGroups(s, w, s.Participation.Data());
    for (; m <= modes; ++m) SumParticipation(s, m);

    f32 residualSum = 1.0f;
    f32 effectiveSum = 0;
    if (s.Options.MissMassOn == 1) {
        // The lumped form counts its equations in 16 bits here.
        if (countInI16) NarrowI16(dof);
        residualSum = SumResidualMassByColumns(s, w);
        for (i32 k = 1; k <= modes; ++k) {
            const f64 g = s.Participation(k);
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

void StartParticipationAhead(RunState& s, const std::vector<i16>& directions) {
    DropParticipationAhead(s);
    const i32 dof = s.Freq.NumDof;
    const i32 modes = s.Freq.NumModes;
    // Worth a thread only when the sums take a while.
    if (WorkerThreads() < 2 || directions.empty() || dof < 1 || modes < 1 ||
        (std::int64_t(dof) * modes < kLeastAhead && !SmallShares()) || s.Excitation.Upper() < dof ||
        s.Participation.Upper() < modes)
        return;
    // The angle of each pass follows from the one before, as the passes set
    // them in turn.
    struct Angle {
        i16 d;
        f64 c, sn;
    };
    std::vector<Angle> angles;
    f64 c = s.CosAngle, sn = s.SinAngle;
    for (const i16 d : directions) {
        if (d < 1 || d > 6) return;
        ExcitationAngle(s, d, c, sn);
        angles.push_back({d, c, sn});
    }
    auto ahead = std::make_shared<ParticipationAhead>();
    ahead->Passes.resize(angles.size());
    ahead->Worker = std::thread([&s, angles, dof, modes, ahead = ahead.get()] {
        OneThreadHere alone;
        for (std::size_t k = 0; k < angles.size(); ++k) {
            ParticipationAhead::Pass& pass = ahead->Passes[k];
            try {
                pass.Excitation.Allocate(s.Excitation.Upper());
                FillExcitation(s, angles[k].d, angles[k].c, angles[k].sn, pass.Excitation);
                const std::vector<f64> w = MassTimesExcitation(s, pass.Excitation);
                if (w.empty()) continue;
                pass.Sums.assign(std::size_t(modes) + 1, 0.0f);
                pass.FirstAlone = SumGroups(s, w, pass.Sums.data());
                pass.Ready = dof == s.Freq.NumDof;
            } catch (...) {
                // The pass works everything itself and meets the failure there.
            }
        }
    });
    s.Ahead = std::move(ahead);
}

void DropParticipationAhead(RunState& s) {
    if (!s.Ahead) return;
    if (s.Ahead->Worker.joinable()) s.Ahead->Worker.join();
    s.Ahead.reset();
}

void ComputeParticipationSquare(RunState& s) { ComputeParticipation(s, false); }

void ComputeParticipationLumped(RunState& s) { ComputeParticipation(s, true); }

}  // namespace tremodal
