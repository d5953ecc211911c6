// Figures the tests work out for themselves, in double precision and without
// the analysis: the uniform shear building's modes (tools/shear_building.h)
// and the modal combinations. The sums take the type of their running sum, so
// that a test can also work out a sum stored as a single on every addition.
#pragma once

#include <cmath>
#include <cstddef>
#include <vector>

#include "tools/shear_building.h"

namespace tremodal::closed_form {

// The building's modes, frequencies, shapes and participation factors:
// closed_form::ShapeValue, closed_form::SortedModes and the rest.
using namespace example;

// The modal correlation of the complete quadratic combination after Der
// Kiureghian (1981), for r = omega_j / omega_i:
// 8 (zi zj)^0.5 (zi + r zj) r^1.5 / ((1 - r^2)^2 + 4 zi zj r (1 + r^2) + 4 (zi^2 + zj^2) r^2).
inline double CqcNumerator(double r, double zi, double zj) {
    return 8 * std::pow(zj * zi, 0.5) * (zj * r + zi) * std::pow(r, 1.5);
}
inline double CqcDenominator(double r, double zi, double zj) {
    const double t = 1 - r * r;
    return t * t + (1 + r * r) * 4 * zi * zj * r + 4 * (zi * zi + zj * zj) * (r * r);
}

// The double sum after Rosenblueth and Elorduy (1969): damped frequencies,
// damping raised by the duration of the strong motion, and the correlation
// 1 / (1 + eps^2) with eps = (w'j - w'i) / (z'j wj + z'i wi).
inline double DampedOmega(double omega, double zeta) { return std::pow(1 - zeta * zeta, 0.5) * omega; }
inline double EffectiveDamping(double omega, double zeta, double duration) {
    return 2.0 / duration / omega + zeta;
}
inline double DsmEpsilon(double wi, double wj, double dampedI, double dampedJ, double effectiveI,
                         double effectiveJ) {
    return (dampedJ - dampedI) / (effectiveJ * wj + effectiveI * wi);
}
inline double DsmCorrelation(double eps) { return 1 / (1 + eps * eps); }

// The modal base shears a (by mode, from 0), their frequencies and damping.
struct ModalShears {
    std::vector<double> A, Omega, Zeta;
};

// The sum of squares (SRSS before the root), or the absolute sum as the
// analysis takes it: a plain sum, signs kept.
template <class Sum = double>
Sum PlainSum(const ModalShears& m, bool squares = true) {
    Sum sum = 0;
    for (const double a : m.A) sum = Sum(sum + (squares ? a * a : a));
    return sum;
}

// Ten percent grouping, before the root: each mode's square and 2 |Ai Aj| for
// every later mode j within 10 % of omega_j, each mode's part summed apart.
template <class Sum = double>
Sum TenPercentSum(const ModalShears& m) {
    Sum sum = 0;
    for (std::size_t i = 0; i < m.A.size(); ++i) {
        Sum part = Sum(m.A[i] * m.A[i]);
        for (std::size_t j = i + 1; j < m.A.size(); ++j)
            if ((m.Omega[j] - m.Omega[i]) / m.Omega[j] <= 0.1)
                part = Sum(part + 2 * std::fabs(m.A[j] * m.A[i]));
        sum = Sum(sum + part);
    }
    return sum;
}

}  // namespace tremodal::closed_form
