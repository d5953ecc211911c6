// The modal combinations of the base shear worked out in rows side by side,
// four terms at a time and on several threads: the bits of the result are
// those of the plain loop with a store on every addition, and a fault is the
// one that loop meets first, with the number and message one thread gives.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

#include "base/wide_registers.h"
#include "base/worker_threads.h"
#include "modal/base_shear.h"
#include "support/closed_form.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using closed_form::ModalShears;

// Several threads share out even these few hundred rows, as they would the
// rows of thousands of modes; the wide registers on or off.
struct Threads {
    Threads(int n, bool wide) { SetWorkerThreads(n), SetSmallShares(n > 1), AllowWideRegisters(wide); }
    ~Threads() { SetWorkerThreads(1), SetSmallShares(false), AllowWideRegisters(true); }
};

// Modes with frequencies that rise unevenly, every seventh equal to the one
// before it, and damping of 0, 2, 5 and 10 %.
void MakeModes(RunState& s, i32 modes, unsigned seed) {
    s.Freq.NumModes = modes;
    AllocateRunArrays(s);
    std::mt19937 g(seed);
    std::uniform_real_distribution<float> u(0, 1);
    const f32 damping[] = {0.05f, 0.02f, 0.0f, 0.05f, 0.1f};
    f32 omega = 2;
    for (i32 m = 1; m <= modes; ++m) {
        if (m % 7 != 0) omega += u(g) * 0.3f;
        s.Freq.Omega(m) = omega, s.ModalDamping(m) = damping[m % 5];
        s.Participation(m) = (u(g) - 0.5f) * 8, s.Curve.ModalSpectrum(m) = u(g) * 0.01f;
    }
    s.Options.DirFactor(1) = 0.7f, s.Options.Duration = 12;
}

// The modal shears Gamma^2 S f omega^2 in double, or stored as singles.
ModalShears ShearsOf(const RunState& s, bool single) {
    ModalShears m;
    for (i32 k = 1; k <= s.Freq.NumModes; ++k) {
        const f64 g = s.Participation(k), w = s.Freq.Omega(k);
        const f64 a = g * g * s.Curve.ModalSpectrum(k) * f64(s.Options.DirFactor(1)) * (w * w);
        m.A.push_back(single ? f32(a) : a), m.Omega.push_back(w), m.Zeta.push_back(s.ModalDamping(k));
    }
    return m;
}

// The correlations with the ratio, the CQC numerator and coefficient and the
// DSM epsilon and coefficient stored as singles.
f64 CqcRho(f64 wi, f64 wj, f64 zi, f64 zj) {
    const f32 r = f32(wj / wi);
    if (r == 1.0f) return 1;
    const f32 num = f32(closed_form::CqcNumerator(r, zi, zj));
    return std::min(f32(num / closed_form::CqcDenominator(r, zi, zj)), 1.0f);
}
f64 DsmRho(f64 wi, f64 wj, f64 dampedI, f64 dampedJ, f64 effectiveI, f64 effectiveJ) {
    const f32 eps = f32(closed_form::DsmEpsilon(wi, wj, dampedI, dampedJ, effectiveI, effectiveJ));
    return f32(closed_form::DsmCorrelation(eps));
}

// The double sums in the order of their definition, every stored value a
// single.
f32 PlainDoubleSum(const RunState& s, int method) {
    const ModalShears m = ShearsOf(s, true);
    std::vector<f32> wd, ze;
    for (std::size_t k = 0; k < m.A.size(); ++k)
        wd.push_back(f32(closed_form::DampedOmega(m.Omega[k], m.Zeta[k]))),
            ze.push_back(f32(closed_form::EffectiveDamping(m.Omega[k], m.Zeta[k], s.Options.Duration)));
    f32 total = 0;
    for (std::size_t i = 0; i < m.A.size(); ++i)
        for (std::size_t j = 0; j < m.A.size(); ++j)
            total = f32(total +
                        (method == 1
                             ? CqcRho(m.Omega[i], m.Omega[j], m.Zeta[i], m.Zeta[j]) * m.A[i] * m.A[j]
                             : m.A[j] * m.A[i] * DsmRho(m.Omega[i], m.Omega[j], wd[i], wd[j], ze[i], ze[j])));
    return total;
}

TEST(DoubleSumRows, EveryMethodOnSeveralThreadsKeepsTheBitsOfTheSingleBySingleSums) {
    for (const unsigned seed : {1u, 2u}) {
        RunState s;
        MakeModes(s, 700, seed);
        // A negative direction factor turns the modal shears round.
        if (seed == 2) s.Options.DirFactor(1) = -0.7f;
        // SRSS and the grouping on shears that are not round numbers: a sum
        // in double rounded once at the end comes out otherwise.
        const ModalShears exact = ShearsOf(s, false), single = ShearsOf(s, true);
        ASSERT_TRUE(f32(closed_form::PlainSum(exact)) != closed_form::PlainSum<f32>(exact) &&
                    f32(closed_form::TenPercentSum(single)) != closed_form::TenPercentSum<f32>(single));
        // The last, the double sum with a duration of 0, which stands for 10 s.
        s.Options.Duration = 10;
        const f32 tenSeconds = PlainDoubleSum(s, 3);
        s.Options.Duration = 12;
        const f32 expected[] = {closed_form::PlainSum<f32>(exact),        PlainDoubleSum(s, 1),
                                closed_form::TenPercentSum<f32>(single),  PlainDoubleSum(s, 3),
                                closed_form::PlainSum<f32>(exact, false), tenSeconds};
        for (const int method : {0, 1, 2, 3, 4, 5}) {
            s.Options.CombMethod = i16(method == 5 ? 3 : method);
            s.Options.Duration = method == 5 ? 0 : 12;
            for (const int threads : {1, 2, 3}) {
                Threads count(threads, threads != 2);
                CombineBaseShear(s, 1);
                EXPECT_EQ(s.BaseShear(1), expected[method])
                    << "method " << method << ", " << threads << " threads";
            }
        }
    }
}

// A negative damping ratio at mode 150 has no square root with the other
// modes' (CQC). With huge modes 1 and 100 the running sum overflows at the
// pair (1, 100), before the pair (1, 150) meets the root. Effective damping
// 0.25 + 0.25 and 0.25 - 0.75 at 1 rad/s make the DSM denominator of modes
// 60 and 61 exactly 0: its epsilon is infinite and its term a finite 0, so
// only the division itself tells.
TEST(DoubleSumRows, AFaultIsTheOneThePlainLoopMeetsFirstOnOneThread) {
    // clang-format off
    const struct { i16 method; bool negativeDamping, hugeModes, zeroDenominator; int failure; } cases[] = {
        {1, true, false, false, kInvalidArgument}, {1, true, true, false, kOverflow},
        {3, false, true, false, kOverflow}, {3, false, false, true, kDivisionByZero}};
    // clang-format on
    for (const auto& c : cases) {
        const auto failureOn = [&](int threads, bool wide) {
            Threads count(threads, wide);
            RunState s;
            MakeModes(s, 200, 3);
            s.Options.CombMethod = c.method;
            if (c.negativeDamping) s.ModalDamping(150) = -0.05f;
            if (c.hugeModes) s.Participation(1) = 1e10f, s.Participation(100) = 5e18f;
            if (c.hugeModes) s.Curve.ModalSpectrum(1) = s.Curve.ModalSpectrum(100) = 0.01f;
            if (c.zeroDenominator) s.Options.Duration = 8, s.Freq.Omega(60) = s.Freq.Omega(61) = 1;
            if (c.zeroDenominator) s.ModalDamping(60) = 0.25f, s.ModalDamping(61) = -0.75f;
            return std::to_string(testing::FailureOf([&] { CombineBaseShear(s, 1); })) + " " +
                   testing::MessageOf([&] { CombineBaseShear(s, 1); });
        };
        const std::string one = failureOn(1, false);
        EXPECT_TRUE(one.starts_with(std::to_string(c.failure) + " ")) << one;
        for (const int threads : {1, 3})
            for (const bool wide : {true, false}) EXPECT_EQ(failureOn(threads, wide), one) << threads << wide;
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
            zeta[m] = m % 4 == 0 ? 0.0f : f32(u(g) * 0.2), shear[m] = f32((u(g) - 0.5) * 1e3);
            damped[m] = f32(closed_form::DampedOmega(omega[m], zeta[m])),
            effective[m] = f32(closed_form::EffectiveDamping(omega[m], zeta[m], 15));
        }
        std::vector<f64> terms(n);
        const auto row = [&](bool isCqc, i32 i) {
            return isCqc ? detail::CqcRowTerms(omega.data(), zeta.data(), shear.data(), 1, count, i,
                                               terms.data())
                         : detail::DsmRowTerms(omega.data(), damped.data(), effective.data(), shear.data(), 1,
                                               count, i, terms.data());
        };
        for (const bool wide : {true, false}) {
            AllowWideRegisters(wide);
            for (i32 i = 1; i <= count; ++i) {
                for (const bool isCqc : {true, false}) {
                    ASSERT_TRUE(row(isCqc, i)) << i;
                    for (i32 j = 1; j <= count; ++j) {
                        const std::size_t a = std::size_t(i), b = std::size_t(j);
                        const f64 term =
                            isCqc ? CqcRho(omega[a], omega[b], zeta[a], zeta[b]) * shear[a] * shear[b]
                                  : f64(shear[b]) * shear[a] *
                                        DsmRho(omega[a], omega[b], damped[a], damped[b], effective[a],
                                               effective[b]);
                        ASSERT_EQ(std::bit_cast<std::uint64_t>(terms[b - 1]),
                                  std::bit_cast<std::uint64_t>(term))
                            << wide << isCqc << " " << i << ", " << j;
                    }
                }
            }
            // A fault anywhere in the row, in the first four terms or the tail.
            for (const std::size_t at : {std::size_t(2), std::size_t(count)}) {
                const std::vector<f32> keepZeta = zeta, keepOmega = omega, keepEffective = effective;
                zeta[at] = -0.01f;
                EXPECT_FALSE(row(true, 1));
                omega[at] = effective[at] = effective[1] = 0;
                EXPECT_FALSE(row(false, 1));
                zeta = keepZeta, omega = keepOmega, effective = keepEffective;
            }
        }
    }
    AllowWideRegisters(true);
}

}  // namespace
}  // namespace tremodal
