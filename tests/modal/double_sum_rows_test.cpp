// The double sums of the combination worked out in rows side by side and on
// several threads: the bits of the result are those of the plain double loop
// with a store on every addition, and a fault is the one that loop meets
// first.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

#include "base/wide_registers.h"
#include "base/worker_threads.h"
#include "modal/base_shear.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

// Several threads share out even these few hundred rows, as they would the
// rows of thousands of modes.
struct ThreadCount {
    explicit ThreadCount(int count) {
        SetWorkerThreads(count);
        SetSmallShares(count > 1);
    }
    ~ThreadCount() {
        SetWorkerThreads(1);
        SetSmallShares(false);
    }
};

// Modes with frequencies that rise unevenly, every seventh equal to the one
// before it, and damping of 0, 2, 5 and 10 %.
void MakeModes(RunState& s, i32 modes, unsigned seed) {
    s.Freq.NumModes = modes;
    s.Freq.Omega.Allocate(modes + 1);
    s.ModalDamping.Allocate(modes + 1);
    s.Participation.Allocate(modes);
    s.Curve.ModalSpectrum.Allocate(modes);
    std::mt19937 g(seed);
    std::uniform_real_distribution<float> u(0, 1);
    const f32 damping[] = {0.05f, 0.02f, 0.0f, 0.05f, 0.1f};
    f32 omega = 2;
    for (i32 m = 1; m <= modes; ++m) {
        if (m % 7 != 0) omega += u(g) * 0.3f;
        s.Freq.Omega(m) = omega;
        s.ModalDamping(m) = damping[m % 5];
        s.Participation(m) = (u(g) - 0.5f) * 8;
        s.Curve.ModalSpectrum(m) = u(g) * 0.01f;
    }
    s.Options.DirFactor(1) = 0.7f;
    s.Options.Duration = 12;
}

// The modal correlation of the complete quadratic combination, with its
// powers, the numerator and the coefficient stored as singles.
f64 CqcRho(f64 wi, f64 wj, f64 zi, f64 zj) {
    const f32 r = f32(wj / wi);
    if (r == 1.0f) return 1;
    const f64 rr = r;
    const f32 num = f32(8 * std::pow(zj * zi, 0.5) * (zj * rr + zi) * std::pow(rr, 1.5));
    const f64 den = (1 - rr * rr) * (1 - rr * rr) + (1 + rr * rr) * 4 * zi * zj * rr +
                    4 * (zi * zi + zj * zj) * (rr * rr);
    return std::min(f32(num / den), 1.0f);
}

// The correlation of the double sum from the damped frequencies and the
// effective damping of the two modes.
f64 DsmRho(f64 wi, f64 wj, f64 dampedI, f64 dampedJ, f64 effectiveI, f64 effectiveJ) {
    const f64 den = effectiveJ * wj + effectiveI * wi;
    const f32 eps = f32((dampedJ - dampedI) / den);
    return f32(1 / (1 + f64(eps) * eps));
}

// The sums in the order of their definition, every stored value a single.
f32 PlainDoubleSum(const RunState& s, int method) {
    const i32 n = s.Freq.NumModes;
    std::vector<f32> a(std::size_t(n) + 1), wd(a.size()), ze(a.size());
    for (i32 m = 1; m <= n; ++m) {
        const f64 g = s.Participation(m), w = s.Freq.Omega(m), z = s.ModalDamping(m);
        a[std::size_t(m)] = f32(g * g * s.Curve.ModalSpectrum(m) * f64(s.Options.DirFactor(1)) * (w * w));
        wd[std::size_t(m)] = f32(std::pow(1 - z * z, 0.5) * w);
        ze[std::size_t(m)] = f32(2.0 / s.Options.Duration / w + z);
    }
    f32 total = 0;
    for (i32 i = 1; i <= n; ++i) {
        for (i32 j = 1; j <= n; ++j) {
            const f64 wi = s.Freq.Omega(i), wj = s.Freq.Omega(j);
            const f64 zi = s.ModalDamping(i), zj = s.ModalDamping(j);
            if (method == 1) {
                total = f32(total + CqcRho(wi, wj, zi, zj) * a[std::size_t(i)] * a[std::size_t(j)]);
            } else {
                const f64 rho = DsmRho(wi, wj, wd[std::size_t(i)], wd[std::size_t(j)], ze[std::size_t(i)],
                                       ze[std::size_t(j)]);
                total = f32(total + f64(a[std::size_t(j)]) * a[std::size_t(i)] * rho);
            }
        }
    }
    return total;
}

TEST(DoubleSumRows, DoubleSumsOnSeveralThreadsKeepTheBitsOfThePlainLoop) {
    for (const int method : {1, 3}) {
        for (const unsigned seed : {1u, 2u}) {
            RunState s;
            MakeModes(s, 700, seed);
            s.Options.CombMethod = i16(method);
            const f32 expected = PlainDoubleSum(s, method);
            for (const int threads : {1, 2, 3}) {
                ThreadCount count(threads);
                CombineBaseShear(s, 1);
                EXPECT_EQ(s.BaseShear(1), expected) << "method " << method << ", " << threads << " threads";
            }
        }
    }
}

TEST(DoubleSumRows, AFaultInARowIsTheOneTheRowOrderMeetsFirst) {
    for (const int threads : {1, 3}) {
        ThreadCount count(threads);
        RunState s;
        MakeModes(s, 200, 3);
        s.Options.CombMethod = 1;
        // A negative damping ratio has no square root with the next mode's.
        s.ModalDamping(150) = -0.05f;
        EXPECT_EQ(FailureOf([&] { CombineBaseShear(s, 1); }), kInvalidArgument) << threads;
        // With huge modes 1 and 100 the running sum overflows at the pair
        // (1, 100), before the pair (1, 150) meets the root.
        s.Participation(1) = 1e10f;
        s.Participation(100) = 5e18f;
        s.Curve.ModalSpectrum(1) = s.Curve.ModalSpectrum(100) = 0.01f;
        EXPECT_EQ(FailureOf([&] { CombineBaseShear(s, 1); }), kOverflow) << threads;
        s.Options.CombMethod = 3;
        s.ModalDamping(150) = 0.05f;
        EXPECT_EQ(FailureOf([&] { CombineBaseShear(s, 1); }), kOverflow) << threads;
    }
}

// The rows four terms at a time hold every term to the last bit of the
// terms one at a time, and both to the formulas with their powers: rows of
// odd length (a tail of one to three terms), equal frequencies, zero and
// uneven damping, frequencies from 0.01 to 1e5 rad/s, and a negative
// damping ratio and a zero frequency that make a row fail.
TEST(DoubleSumRows, RowsFourTermsAtATimeHoldTheBitsOfTheFormulas) {
    std::mt19937 g(7);
    std::uniform_real_distribution<double> u(0, 1);
    for (const i32 count : {5, 6, 7, 8, 1003}) {
        const std::size_t n = std::size_t(count) + 1;
        std::vector<f32> omega(n), zeta(n), shear(n), damped(n), effective(n);
        for (std::size_t m = 1; m < n; ++m) {
            omega[m] = m % 9 == 0 ? omega[m - 1] : f32(0.01 * std::pow(1e7, u(g)));
            zeta[m] = m % 4 == 0 ? 0.0f : f32(u(g) * 0.2);
            shear[m] = f32((u(g) - 0.5) * 1e3);
            damped[m] = f32(std::pow(1 - f64(zeta[m]) * zeta[m], 0.5) * omega[m]);
            effective[m] = f32(2.0 / 15 / omega[m] + zeta[m]);
        }
        std::vector<f64> wide(n), narrow(n);
        for (i32 i = 1; i <= count; ++i) {
            AllowWideRegisters(true);
            const bool wideGood =
                detail::CqcRowTerms(omega.data(), zeta.data(), shear.data(), 1, count, i, wide.data());
            AllowWideRegisters(false);
            const bool good =
                detail::CqcRowTerms(omega.data(), zeta.data(), shear.data(), 1, count, i, narrow.data());
            ASSERT_TRUE(good && wideGood) << i;
            for (i32 j = 1; j <= count; ++j) {
                const std::size_t k = std::size_t(j - 1);
                ASSERT_EQ(std::bit_cast<std::uint64_t>(wide[k]), std::bit_cast<std::uint64_t>(narrow[k]))
                    << "CQC " << i << ", " << j;
                const f64 rho = CqcRho(omega[std::size_t(i)], omega[std::size_t(j)], zeta[std::size_t(i)],
                                       zeta[std::size_t(j)]);
                ASSERT_EQ(wide[k], rho * shear[std::size_t(i)] * shear[std::size_t(j)])
                    << "CQC " << i << ", " << j;
            }
            AllowWideRegisters(true);
            const bool dsmWideGood = detail::DsmRowTerms(omega.data(), damped.data(), effective.data(),
                                                         shear.data(), 1, count, i, wide.data());
            AllowWideRegisters(false);
            const bool dsmGood = detail::DsmRowTerms(omega.data(), damped.data(), effective.data(),
                                                     shear.data(), 1, count, i, narrow.data());
            ASSERT_TRUE(dsmGood && dsmWideGood) << i;
            for (i32 j = 1; j <= count; ++j) {
                const std::size_t k = std::size_t(j - 1), ui = std::size_t(i), uj = std::size_t(j);
                ASSERT_EQ(std::bit_cast<std::uint64_t>(wide[k]), std::bit_cast<std::uint64_t>(narrow[k]))
                    << "DSM " << i << ", " << j;
                const f64 rho =
                    DsmRho(omega[ui], omega[uj], damped[ui], damped[uj], effective[ui], effective[uj]);
                ASSERT_EQ(wide[k], f64(shear[uj]) * shear[ui] * rho) << "DSM " << i << ", " << j;
            }
        }
        // A fault anywhere in the row, in the first four terms or the tail.
        for (const std::size_t at : {std::size_t(2), std::size_t(count)}) {
            for (const bool allow : {true, false}) {
                AllowWideRegisters(allow);
                const f32 keep = zeta[at];
                zeta[at] = -0.01f;
                EXPECT_FALSE(
                    detail::CqcRowTerms(omega.data(), zeta.data(), shear.data(), 1, count, 1, wide.data()));
                zeta[at] = keep;
                const f32 keepOmega = omega[at], keepEffective = effective[at];
                omega[at] = effective[at] = 0;
                effective[1] = 0;
                EXPECT_FALSE(detail::DsmRowTerms(omega.data(), damped.data(), effective.data(), shear.data(),
                                                 1, count, 1, wide.data()));
                omega[at] = keepOmega;
                effective[at] = keepEffective;
                effective[1] = f32(2.0 / 15 / omega[1] + zeta[1]);
            }
        }
    }
    AllowWideRegisters(true);
}

}  // namespace
}  // namespace tremodal
