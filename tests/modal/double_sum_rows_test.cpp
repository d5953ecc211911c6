// The double sums of the combination worked out in rows side by side and on
// several threads: the bits of the result are those of the plain double loop
// with a store on every addition, and a fault is the one that loop meets
// first.
#include "modal/base_shear.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "runcontrol/worker_threads.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

struct ThreadCount {
    explicit ThreadCount(int count) { SetWorkerThreads(count); }
    ~ThreadCount() { SetWorkerThreads(1); }
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
            f64 rho = 1;
            if (method == 1) {
                const f32 r = f32(wj / wi);
                if (r != 1.0f) {
                    const f64 rr = r;
                    const f32 num = f32(8 * std::pow(zj * zi, 0.5) * (zj * rr + zi) * std::pow(rr, 1.5));
                    const f64 den = (1 - rr * rr) * (1 - rr * rr) + (1 + rr * rr) * 4 * zi * zj * rr +
                                    4 * (zi * zi + zj * zj) * (rr * rr);
                    rho = std::min(f32(num / den), 1.0f);
                }
                total = f32(total + rho * a[std::size_t(i)] * a[std::size_t(j)]);
            } else {
                const f64 den = f64(ze[std::size_t(j)]) * wj + f64(ze[std::size_t(i)]) * wi;
                const f32 eps = f32((f64(wd[std::size_t(j)]) - wd[std::size_t(i)]) / den);
                rho = f32(1 / (1 + f64(eps) * eps));
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

}  // namespace
}  // namespace tremodal
