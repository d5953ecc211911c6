#include "modal/base_shear.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <vector>

#include "runcontrol/checked_math.h"
#include "runcontrol/worker_threads.h"

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

// The two parts of the modal correlation of the complete quadratic
// combination, after Der Kiureghian (1981), for the frequency ratio
// r = omega(j) / omega(i): the numerator 8 (zeta_j zeta_i)^0.5 (zeta_j r +
// zeta_i) r^1.5, given the two powers, and the denominator.
inline f64 CqcNumerator(f64 root, f64 zi, f64 zj, f64 r, f64 rPower) {
    return 8 * root * (zj * r + zi) * rPower;
}
inline f64 CqcDenominator(f64 zi, f64 zj, f64 r) {
    const f64 t = 1 - r * r;
    return t * t + (1 + r * r) * 4 * zi * zj * r + 4 * (zi * zi + zj * zj) * (r * r);
}

// The modal correlation. Modes of exactly equal frequency are fully
// correlated, whatever their damping.
f32 CqcCorrelation(f64 zi, f64 zj, f32 r, DampingRoot& dampingRoot) {
    if (r == 1.0f) return 1.0f;
    const f64 rr = r;
    const f32 n = StoreF32(CqcNumerator(dampingRoot.Of(zj, zi), zi, zj, rr, Pow(rr, 1.5)));
    const f32 rho = StoreF32(Div(n, CqcDenominator(zi, zj, rr)));
    return rho > 1.0f ? 1.0f : rho;
}

// True when a double lies so near the half way point between two singles
// (or among the smallest singles) that a last-bit difference in how it was
// worked out could change the single it rounds to: the 29 bits a single drops
// stand within 64 of 1000...0.
bool NearSingleTie(f64 x) {
    const std::uint64_t bits = std::bit_cast<std::uint64_t>(x);
    if ((bits & 0x7ff0000000000000u) < 0x3820000000000000u) return true;  // below 2^-125
    const std::uint64_t dropped = bits & ((std::uint64_t(1) << 29) - 1);
    return dropped + 64 - (std::uint64_t(1) << 28) < 128;
}

// The terms of one row i of the complete quadratic combination, worked out
// side by side: no term depends on another, only their sum on the order.
// The two powers, (zeta_j zeta_i)^0.5 and r^1.5, are taken as square roots,
// each a unit or two of the last place of a double from the power. Where
// that could move the single the numerator is stored as, the row is worked
// again with the powers themselves, so every stored value is the one of the
// literal formula. Returns false where a value would fail its store or a
// division, for the literal row to meet the failure in its own order.
bool CqcRowTerms(const f32* omega, const f32* zeta, const f32* shear, i32 first, i32 last, i32 i,
                 DampingRoot& dampingRoot, f64* terms) {
    const f64 wi = omega[i], zi = zeta[i], ai = shear[i];
    if (!(wi > 0) || zi < 0) return false;
    const i32 count = last - first + 1;
    omega += first;
    zeta += first;
    shear += first;
    bool good = true, nearTie = false;
    for (i32 k = 0; k < count; ++k) {
        const f64 q = omega[k] / wi;
        const f32 r = RoundToSingle(q);
        const f64 rr = r, zj = zeta[k];
        const f64 nx = CqcNumerator(std::sqrt(zj * zi), zi, zj, rr, rr * std::sqrt(rr));
        const f64 den = CqcDenominator(zi, zj, rr);
        const f64 ratio = f64(RoundToSingle(nx)) / den;
        const f32 stored = RoundToSingle(ratio);
        const bool equal = r == 1.0f;
        // Modes of equal frequency are fully correlated and skip the formula.
        good &=
            q < kSingleOverflow && zj >= 0 &&
            (equal || (std::fabs(nx) < kSingleOverflow && den != 0 && std::fabs(ratio) < kSingleOverflow));
        nearTie |= !equal && NearSingleTie(nx);
        const f64 rho = equal || stored > 1.0f ? 1.0f : stored;
        terms[k] = rho * ai * shear[k];
    }
    if (!good || !nearTie) return good;
    for (i32 k = 0; k < count; ++k) {
        const f32 r = RoundToSingle(omega[k] / wi);
        if (r == 1.0f) continue;
        const f64 rr = r, zj = zeta[k];
        const f64 nx = CqcNumerator(dampingRoot.Of(zj, zi), zi, zj, rr, std::pow(rr, 1.5));
        const f32 stored = RoundToSingle(f64(RoundToSingle(nx)) / CqcDenominator(zi, zj, rr));
        terms[k] = (stored > 1.0f ? 1.0f : stored) * ai * shear[k];
    }
    return true;
}

// The terms of one row i of the double sum, side by side; false where a value
// would fail, as above.
bool DsmRowTerms(const f32* omega, const f32* dampedOmega, const f32* zetaEff, const f32* shear, i32 first,
                 i32 last, i32 i, f64* terms) {
    const f64 wi = omega[i], ei = f64(zetaEff[i]) * wi, di = dampedOmega[i], ai = shear[i];
    bool good = true;
    for (i32 j = first; j <= last; ++j) {
        const f64 den = f64(zetaEff[j]) * omega[j] + ei;
        good &= den != 0;
        const f64 e = (f64(dampedOmega[j]) - di) / den;
        good &= std::fabs(e) < kSingleOverflow;
        const f64 eps = RoundToSingle(e);
        const f32 rho = RoundToSingle(1 / (1 + eps * eps));
        terms[j - first] = f64(shear[j]) * ai * rho;
    }
    return good;
}

// Adds a row's terms to the running sum in order, every addition rounded to
// a single. An overflow stays infinite through the rest of the row, so one
// look at the end tells whether the row is to be worked again with checks.
bool AddRow(f32& total, const f64* terms, std::size_t count) {
    f32 sum = total;
    for (std::size_t k = 0; k < count; ++k) sum = RoundToSingle(f64(sum) + terms[k]);
    if (!std::isfinite(sum)) return false;
    total = sum;
    return true;
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

    // Rows of the double sums worked side by side need every mode of the
    // range to have its slots; anything else goes the literal way and fails
    // with its subscript there.
    const bool fastRows =
        first >= 1 && last <= s.Freq.NumModes && last < s.Freq.Omega.Upper() && last < s.ModalDamping.Upper();
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
            const std::size_t length = std::size_t(std::max(last - first + 1, 0));
            DampingRoot dampingRoot;
            ForEachRowInOrder(
                first, last, length,
                [&] {
                    return [&, root = DampingRoot()](i32 i, f64* terms) mutable {
                        return fastRows && CqcRowTerms(s.Freq.Omega.Data(), s.ModalDamping.Data(),
                                                       shear.data(), first, last, i, root, terms);
                    };
                },
                [&](i32 i, const f64* terms, bool good) {
                    if (good && AddRow(total, terms, length)) return;
                    // The row again, literally, to fail where its order fails.
                    for (i32 j = first; j <= last; ++j) {
                        const f32 r = StoreF32(Div(s.Freq.Omega(j), s.Freq.Omega(i)));
                        const f64 rho = CqcCorrelation(s.ModalDamping(i), s.ModalDamping(j), r, dampingRoot);
                        AddToShear(total, rho * shear[std::size_t(i)] * shear[std::size_t(j)]);
                    }
                });
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
            const std::size_t length = std::size_t(std::max(last - first + 1, 0));
            ForEachRowInOrder(
                first, last, length,
                [&] {
                    return [&](i32 i, f64* terms) {
                        return fastRows && DsmRowTerms(s.Freq.Omega.Data(), dampedOmega.data(),
                                                       zetaEff.data(), shear.data(), first, last, i, terms);
                    };
                },
                [&](i32 i, const f64* terms, bool good) {
                    if (good && AddRow(total, terms, length)) return;
                    for (i32 j = first; j <= last; ++j) {
                        const std::size_t ui = std::size_t(i), uj = std::size_t(j);
                        const f64 den =
                            f64(zetaEff[uj]) * s.Freq.Omega(j) + f64(zetaEff[ui]) * s.Freq.Omega(i);
                        const f32 eps = StoreF32(Div(f64(dampedOmega[uj]) - dampedOmega[ui], den));
                        const f32 rho = StoreF32(Div(1, 1 + f64(eps) * eps));
                        AddToShear(total, f64(shear[uj]) * shear[ui] * rho);
                    }
                });
            break;
        }
        default:
            break;  // no such method: the shear stays 0
    }
    s.BaseShear(d) = total;
}

}  // namespace tremodal
