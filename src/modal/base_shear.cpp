#include "modal/base_shear.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

#include "base/checked_math.h"
#include "base/wide_registers.h"
#include "base/worker_threads.h"

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

#if TREMODAL_WIDE_REGISTERS
// The same terms four at a time in the 256-bit registers of processors that
// have them. Every operation is the one the row above does, in the same
// order and in double, so every term comes out the same to the last bit.
// Lanes of a comparison as a mask.
TREMODAL_WIDE inline __m256d Below(__m256d a, __m256d b) { return _mm256_cmp_pd(a, b, _CMP_LT_OQ); }
TREMODAL_WIDE inline __m256d Magnitude(__m256d a) {
    return _mm256_and_pd(a, _mm256_castsi256_pd(_mm256_set1_epi64x(0x7fffffffffffffff)));
}
TREMODAL_WIDE inline __m256d ToSingleAndBack(__m256d a) { return _mm256_cvtps_pd(_mm256_cvtpd_ps(a)); }

// The terms of k = 0, 4, 8, ... while four remain; returns where the row
// goes on one at a time. Folds the checks into good and nearTie.
TREMODAL_WIDE i32 CqcTermsWide(const f32* omega, const f32* zeta, const f32* shear, i32 count, f64 wi, f64 zi,
                               f64 ai, f64* terms, bool& good, bool& nearTie) {
    const __m256d vwi = _mm256_set1_pd(wi), vzi = _mm256_set1_pd(zi), vai = _mm256_set1_pd(ai);
    const __m256d one = _mm256_set1_pd(1.0), four = _mm256_set1_pd(4.0), eight = _mm256_set1_pd(8.0);
    const __m256d big = _mm256_set1_pd(kSingleOverflow), zero = _mm256_setzero_pd();
    const __m256i exponent = _mm256_set1_epi64x(0x7ff0000000000000),
                  tiny = _mm256_set1_epi64x(0x3820000000000000);
    const __m256i dropped = _mm256_set1_epi64x((std::int64_t(1) << 29) - 1);
    const __m256i halfLow = _mm256_set1_epi64x((std::int64_t(1) << 28) - 65);
    const __m256i halfHigh = _mm256_set1_epi64x((std::int64_t(1) << 28) + 64);
    __m256d allGood = _mm256_castsi256_pd(_mm256_set1_epi64x(-1));
    __m256i ties = _mm256_setzero_si256();
    i32 k = 0;
    for (; k + 4 <= count; k += 4) {
        const __m256d q = _mm256_div_pd(_mm256_cvtps_pd(_mm_loadu_ps(omega + k)), vwi);
        const __m256d r = ToSingleAndBack(q);
        const __m256d zj = _mm256_cvtps_pd(_mm_loadu_ps(zeta + k));
        const __m256d root = _mm256_sqrt_pd(_mm256_mul_pd(zj, vzi));
        const __m256d power = _mm256_mul_pd(r, _mm256_sqrt_pd(r));
        const __m256d nx = _mm256_mul_pd(
            _mm256_mul_pd(_mm256_mul_pd(eight, root), _mm256_add_pd(_mm256_mul_pd(zj, r), vzi)), power);
        const __m256d r2 = _mm256_mul_pd(r, r);
        const __m256d t = _mm256_sub_pd(one, r2);
        const __m256d cross = _mm256_mul_pd(
            _mm256_mul_pd(_mm256_mul_pd(_mm256_mul_pd(_mm256_add_pd(one, r2), four), vzi), zj), r);
        const __m256d squares = _mm256_mul_pd(
            _mm256_mul_pd(four, _mm256_add_pd(_mm256_mul_pd(vzi, vzi), _mm256_mul_pd(zj, zj))), r2);
        const __m256d den = _mm256_add_pd(_mm256_add_pd(_mm256_mul_pd(t, t), cross), squares);
        const __m256d ratio = _mm256_div_pd(ToSingleAndBack(nx), den);
        const __m256d stored = ToSingleAndBack(ratio);
        const __m256d equal = _mm256_cmp_pd(r, one, _CMP_EQ_OQ);
        const __m256d fits =
            _mm256_and_pd(_mm256_and_pd(Below(Magnitude(nx), big), _mm256_cmp_pd(den, zero, _CMP_NEQ_UQ)),
                          Below(Magnitude(ratio), big));
        allGood = _mm256_and_pd(
            allGood, _mm256_and_pd(_mm256_and_pd(Below(q, big), _mm256_cmp_pd(zj, zero, _CMP_GE_OQ)),
                                   _mm256_or_pd(equal, fits)));
        const __m256i bits = _mm256_castpd_si256(nx);
        const __m256i small = _mm256_cmpgt_epi64(tiny, _mm256_and_si256(bits, exponent));
        const __m256i low = _mm256_and_si256(bits, dropped);
        const __m256i nearHalf =
            _mm256_and_si256(_mm256_cmpgt_epi64(low, halfLow), _mm256_cmpgt_epi64(halfHigh, low));
        ties = _mm256_or_si256(
            ties, _mm256_andnot_si256(_mm256_castpd_si256(equal), _mm256_or_si256(small, nearHalf)));
        const __m256d rho =
            _mm256_blendv_pd(stored, one, _mm256_or_pd(equal, _mm256_cmp_pd(stored, one, _CMP_GT_OQ)));
        _mm256_storeu_pd(terms + k,
                         _mm256_mul_pd(_mm256_mul_pd(rho, vai), _mm256_cvtps_pd(_mm_loadu_ps(shear + k))));
    }
    good &= _mm256_movemask_pd(allGood) == 0xf;
    nearTie |= !_mm256_testz_si256(ties, ties);
    return k;
}

TREMODAL_WIDE i32 DsmTermsWide(const f32* omega, const f32* dampedOmega, const f32* zetaEff, const f32* shear,
                               i32 count, f64 ei, f64 di, f64 ai, f64* terms, bool& good) {
    const __m256d vei = _mm256_set1_pd(ei), vdi = _mm256_set1_pd(di), vai = _mm256_set1_pd(ai);
    const __m256d one = _mm256_set1_pd(1.0), big = _mm256_set1_pd(kSingleOverflow),
                  zero = _mm256_setzero_pd();
    __m256d allGood = _mm256_castsi256_pd(_mm256_set1_epi64x(-1));
    i32 k = 0;
    for (; k + 4 <= count; k += 4) {
        const __m256d den = _mm256_add_pd(_mm256_mul_pd(_mm256_cvtps_pd(_mm_loadu_ps(zetaEff + k)),
                                                        _mm256_cvtps_pd(_mm_loadu_ps(omega + k))),
                                          vei);
        const __m256d e =
            _mm256_div_pd(_mm256_sub_pd(_mm256_cvtps_pd(_mm_loadu_ps(dampedOmega + k)), vdi), den);
        allGood = _mm256_and_pd(
            allGood, _mm256_and_pd(_mm256_cmp_pd(den, zero, _CMP_NEQ_UQ), Below(Magnitude(e), big)));
        const __m256d eps = ToSingleAndBack(e);
        const __m256d rho = ToSingleAndBack(_mm256_div_pd(one, _mm256_add_pd(one, _mm256_mul_pd(eps, eps))));
        _mm256_storeu_pd(terms + k,
                         _mm256_mul_pd(_mm256_mul_pd(_mm256_cvtps_pd(_mm_loadu_ps(shear + k)), vai), rho));
    }
    good &= _mm256_movemask_pd(allGood) == 0xf;
    return k;
}
#endif

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
    i32 k = 0;
#if TREMODAL_WIDE_REGISTERS
    if (HasWideRegisters()) k = CqcTermsWide(omega, zeta, shear, count, wi, zi, ai, terms, good, nearTie);
#endif
    for (; k < count; ++k) {
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
    i32 j = first;
#if TREMODAL_WIDE_REGISTERS
    if (HasWideRegisters())
        j += DsmTermsWide(omega + first, dampedOmega + first, zetaEff + first, shear + first,
                          last - first + 1, ei, di, ai, terms, good);
#endif
    for (; j <= last; ++j) {
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

namespace {

// Combines modal values of modes first..last under a method: the square of
// the combined value for the quadratic methods and the plain sum for ABS.
// modal(m) is the value of mode m in double, as the sums of squares and the
// plain sum take it; the double sums take it stored as a single.
f32 CombineModalValues(const RunState& s, i16 method, i32 first, i32 last,
                       const std::function<f64(i32)>& modal) {
    // The running sum, kept in a register until it is the caller's.
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
        for (i32 m = first; m <= last; ++m) shear.at(std::size_t(m)) = StoreF32(modal(m));
    };

    switch (method) {
        case 0:  // square root of the sum of squares
            for (i32 m = first; m <= last; ++m) {
                const f64 a = modal(m);
                AddToShear(total, a * a);
            }
            break;
        case 4:  // absolute sum, taken as a plain sum: the sign of f stays
            for (i32 m = first; m <= last; ++m) AddToShear(total, modal(m));
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
    return total;
}

// The modes a combination takes: all of them, or the one single mode.
void CombinedModes(const RunState& s, i32& first, i32& last) {
    first = 1;
    last = s.Freq.NumModes;
    if (s.Options.SingleMode != 0) first = last = s.Options.SingleMode;
}

}  // namespace

// Combines the modal base shears of a translational direction. BaseShear(d)
// holds the square of the combined shear for the quadratic methods and the
// plain sum for ABS.
void CombineBaseShear(RunState& s, i16 d) {
    s.BaseShear(d) = 0;
    i32 first = 0, last = 0;
    CombinedModes(s, first, last);
    if (d >= 4) return;  // a ground rotation gives no base shear
    const f64 f = s.Options.DirFactor(d);
    s.BaseShear(d) =
        CombineModalValues(s, s.Options.CombMethod, first, last, [&](i32 m) { return ModalShear(s, m, f); });
}

StoreySums SumStoreys(const RunState& s) {
    StoreySums sums;
    const FrequencyCase& c = s.Freq;
    const i32 nodes = i32(std::min(c.NodeDof.Upper1(), s.Model.NodeY.Upper()));
    const auto carriesMass = [&](i32 n) {
        for (i32 k = 1; k <= 3; ++k) {
            const i32 e = c.NodeDof(n, k);
            if (e > 0 && e <= c.MassTerms.Upper() && c.MassTerms(e) != 0) return true;
        }
        return false;
    };
    for (i32 n = 1; n <= nodes; ++n) {
        if (carriesMass(n)) sums.Heights.push_back(s.Model.NodeY(n));
    }
    std::sort(sums.Heights.begin(), sums.Heights.end(), std::greater<f32>());
    sums.Heights.erase(std::unique(sums.Heights.begin(), sums.Heights.end()), sums.Heights.end());
    const std::size_t levels = sums.Heights.size();
    if (levels == 0) return sums;

    // The level of each equation: that of the node whose freedom it is (the
    // last node that names it, as the shape block's map has it).
    const i32 modes = c.NumModes, dof = c.NumDof;
    std::vector<i32> levelOf(std::size_t(std::max(dof, 0)) + 1, -1);
    for (i32 n = 1; n <= nodes; ++n) {
        const f32 y = s.Model.NodeY(n);
        const auto at = std::lower_bound(sums.Heights.begin(), sums.Heights.end(), y, std::greater<f32>());
        if (at == sums.Heights.end() || *at != y) continue;
        for (i32 k = 1; k <= 6; ++k) {
            const i32 e = c.NodeDof(n, k);
            if (e > 0 && e <= dof) levelOf[std::size_t(e)] = i32(at - sums.Heights.begin());
        }
    }

    // From the top down, level by level, the running sum of each mode.
    sums.Modes = modes;
    sums.Above.assign(levels * std::size_t(modes + 1), 0.0);
    std::vector<f64> atLevel(levels);
    for (i32 m = 1; m <= modes; ++m) {
        std::fill(atLevel.begin(), atLevel.end(), 0.0);
        for (i32 e = 1; e <= dof; ++e) {
            const i32 level = levelOf[std::size_t(e)];
            if (level < 0 || e > c.MassTerms.Upper()) continue;
            atLevel[std::size_t(level)] += f64(c.MassTerms(e)) * c.ModeShape(e, m) * s.Excitation(e);
        }
        f64 sum = 0;
        for (std::size_t l = 0; l < levels; ++l)
            sums.Above[l * std::size_t(modes + 1) + std::size_t(m)] = sum += atLevel[l];
    }
    return sums;
}

std::vector<f32> CombineStoreyShears(const RunState& s, i16 d, i16 method, const StoreySums& sums) {
    const std::size_t levels = sums.Heights.size();
    std::vector<f32> combined(levels, 0.0f);
    if (d >= 4 || levels == 0) return combined;
    i32 first = 0, last = 0;
    CombinedModes(s, first, last);
    const f64 f = s.Options.DirFactor(d);
    const std::size_t stride = std::size_t(sums.Modes + 1);
    const f64* base = &sums.Above[(levels - 1) * stride];
    for (std::size_t l = 0; l < levels; ++l) {
        const f64* row = &sums.Above[l * stride];
        const f32 total = CombineModalValues(s, method, first, last, [&](i32 m) {
            if (m < 1 || m > sums.Modes || base[m] == 0) return 0.0;
            // The base shear's plain sum adds modal shears of one sign; up the
            // building a higher mode's shear turns, and the absolute sum takes
            // its size.
            const f64 share = method == 4 ? std::fabs(row[m] / base[m]) : row[m] / base[m];
            return CheckF64(ModalShear(s, m, f) * share);
        });
        combined[l] = CombinedShear(total, method);
    }
    return combined;
}

f32 CombinedShear(f32 baseShear, i16 combMethod) {
    return combMethod == 4 ? baseShear : StoreF32(Sqrt(baseShear));
}

namespace detail {

bool CqcRowTerms(const f32* omega, const f32* zeta, const f32* shear, i32 first, i32 last, i32 i,
                 f64* terms) {
    DampingRoot root;
    return tremodal::CqcRowTerms(omega, zeta, shear, first, last, i, root, terms);
}

bool DsmRowTerms(const f32* omega, const f32* dampedOmega, const f32* zetaEff, const f32* shear, i32 first,
                 i32 last, i32 i, f64* terms) {
    return tremodal::DsmRowTerms(omega, dampedOmega, zetaEff, shear, first, last, i, terms);
}

}  // namespace detail

}  // namespace tremodal
