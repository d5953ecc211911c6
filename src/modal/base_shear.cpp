#include "modal/base_shear.h"

#include <cmath>
#include <vector>

#include "runcontrol/checked_math.h"

namespace tremodal {

namespace {

// The modal base shear Gamma^2 S f omega^2, in double, in this order.
f64 ModalShear(const RunState& s, i32 m, f64 f) {
    const f64 g = s.Participation(m);
    const f64 omega = s.Freq.Omega(m);
    return CheckF64(g * g * s.Curve.ModalSpectrum(m) * f * (omega * omega));
}

// Adds to the running sum of the direction; every addition is a store.
void AddToShear(f32& shear, f64 term) { shear = StoreF32(f64(shear) + term); }

// (zeta_j zeta_i)^0.5 of the last pair, kept: the damping of most models is
// the same in every mode, so of the two powers of each of the millions of
// pairs of a large model this one is nearly always the one just worked out.
struct DampingRoot {
    f64 product = -1;
    f64 root = 0;

    f64 Of(f64 zj, f64 zi) {
        const f64 p = zj * zi;
        if (p != product || p < 0) {
            root = Pow(p, 0.5);
            product = p;
        }
        return root;
    }
};

// Modal correlation of the complete quadratic combination, after Der
// Kiureghian (1981), for the frequency ratio r = omega(j) / omega(i). Modes
// of exactly equal frequency are fully correlated, whatever their damping.
f32 CqcCorrelation(f64 zi, f64 zj, f32 r, DampingRoot& dampingRoot) {
    if (r == 1.0f) return 1.0f;
    const f64 rr = r;
    const f32 n = StoreF32(8 * dampingRoot.Of(zj, zi) * (zj * rr + zi) * Pow(rr, 1.5));
    const f64 t = 1 - rr * rr;
    const f64 den = t * t + (1 + rr * rr) * 4 * zi * zj * rr + 4 * (zi * zi + zj * zj) * (rr * rr);
    const f32 rho = StoreF32(Div(n, den));
    return rho > 1.0f ? 1.0f : rho;
}

}  // namespace

// Combines the modal base shears of a translational direction. BaseShear(d)
// holds the square of the combined shear for the quadratic methods and the
// plain sum for ABS.
void CombineBaseShear(RunState& s, i16 d) {
    s.BaseShear(d) = 0;
    i32 first = 1, last = s.Freq.NumModes;
    if (s.Options.SingleMode != 0) first = last = s.Options.SingleMode;
    if (d >= 4) return;  // a ground rotation gives no base shear
    const f64 f = s.Options.DirFactor(d);
    // The running sum, kept in a register until it is the direction's.
    f32 total = 0;

    // The stored modal shears of methods 1 to 3, by mode number.
    std::vector<f32> shear;
    const auto storeShears = [&] {
        shear.assign(std::size_t(last < 0 ? 0 : last) + 1, 0.0f);
        for (i32 m = first; m <= last; ++m) shear.at(std::size_t(m)) = StoreF32(ModalShear(s, m, f));
    };

    switch (s.Options.CombMethod) {
        case 0:  // square root of the sum of squares
            for (i32 m = first; m <= last; ++m) {
                const f64 a = ModalShear(s, m, f);
                AddToShear(total, a * a);
            }
            break;
        case 4:  // absolute sum, taken as a plain sum: the sign of f stays
            for (i32 m = first; m <= last; ++m) AddToShear(total, ModalShear(s, m, f));
            break;
        case 1: {  // complete quadratic combination over every ordered pair
            storeShears();
            DampingRoot dampingRoot;
            for (i32 i = first; i <= last; ++i) {
                for (i32 j = first; j <= last; ++j) {
                    const f32 r = StoreF32(Div(s.Freq.Omega(j), s.Freq.Omega(i)));
                    const f64 rho = CqcCorrelation(s.ModalDamping(i), s.ModalDamping(j), r, dampingRoot);
                    AddToShear(total, rho * shear[std::size_t(i)] * shear[std::size_t(j)]);
                }
            }
            break;
        }
        case 2:  // ten percent grouping: closely spaced pairs add 2 |Ai Aj|
            storeShears();
            for (i32 i = first; i <= last; ++i) {
                const f64 ai = shear[std::size_t(i)];
                f32 acc = StoreF32(ai * ai);
                for (i32 j = i + 1; j <= last; ++j) {
                    // Relative to the later mode's frequency; each pair on
                    // its own, no chains of neighbours.
                    const f64 wi = s.Freq.Omega(i), wj = s.Freq.Omega(j);
                    const f32 x = StoreF32(Div(wj - wi, wj));
                    if (x <= 0.1f) acc = StoreF32(f64(acc) + 2 * std::fabs(f64(shear[std::size_t(j)]) * ai));
                }
                AddToShear(total, acc);
            }
            break;
        case 3: {  // double sum after Rosenblueth and Elorduy (1969)
            storeShears();
            f64 duration = s.Options.Duration;
            if (duration == 0) duration = 10.0;
            const std::size_t size = shear.size();
            std::vector<f32> dampedOmega(size, 0.0f), zetaEff(size, 0.0f);
            for (i32 m = first; m <= last; ++m) {
                const f64 zeta = s.ModalDamping(m);
                const f64 omega = s.Freq.Omega(m);
                dampedOmega.at(std::size_t(m)) = StoreF32(Pow(1 - zeta * zeta, 0.5) * omega);
                // Damping raised by the finite duration of the strong motion.
                zetaEff.at(std::size_t(m)) = StoreF32(Div(Div(2, duration), omega) + zeta);
            }
            for (i32 i = first; i <= last; ++i) {
                for (i32 j = first; j <= last; ++j) {
                    const std::size_t ui = std::size_t(i), uj = std::size_t(j);
                    const f64 den = f64(zetaEff[uj]) * s.Freq.Omega(j) + f64(zetaEff[ui]) * s.Freq.Omega(i);
                    const f32 eps = StoreF32(Div(f64(dampedOmega[uj]) - dampedOmega[ui], den));
                    const f32 rho = StoreF32(Div(1, 1 + f64(eps) * eps));
                    AddToShear(total, f64(shear[uj]) * shear[ui] * rho);
                }
            }
            break;
        }
        default:
            break;  // no such method: the shear stays 0
    }
    s.BaseShear(d) = total;
}

f32 CombinedShear(f32 baseShear, i16 combMethod) {
    return combMethod == 4 ? baseShear : StoreF32(Sqrt(baseShear));
}

}  // namespace tremodal
