#include "base/checked_math.h"

#include <cmath>
#include <limits>
#include <string>

#include "base/number_text.h"

namespace tremodal {
namespace {

[[noreturn]] void FailOverflow(f64 x, const char* target) {
    Fail(kOverflow, "overflow: " + GeneralText(x) + " does not fit " + target);
}

// Nearest integer, a value half way going to the even one. Worked out
// explicitly rather than with std::nearbyint so that it does not depend on
// the floating point rounding mode. x - trunc(x) is exact, so a tie is seen
// only for a true half.
f64 RoundHalfEven(f64 x) {
    const f64 whole = std::trunc(x);
    if (std::fabs(x - whole) != 0.5) return std::round(x);
    return std::fmod(whole, 2) == 0 ? whole : whole + std::copysign(1.0, x);
}

template <typename Int>
Int ToInteger(f64 rounded, f64 x, const char* target) {
    // NaN fails both comparisons and so falls through to the failure.
    if (rounded >= f64(std::numeric_limits<Int>::min()) && rounded <= f64(std::numeric_limits<Int>::max())) {
        return Int(rounded);
    }
    FailOverflow(x, target);
}

template <typename Int>
Int Narrow(std::int64_t x, const char* target) {
    if (x < std::numeric_limits<Int>::min() || x > std::numeric_limits<Int>::max()) {
        Fail(kOverflow, "overflow: " + std::to_string(x) + " does not fit " + target);
    }
    return Int(x);
}

}  // namespace

void FailStoreF32(f64 x) {
    if (std::isnan(x)) Fail(kOverflow, "overflow: not a number stored in a single");
    FailOverflow(x, "a single");
}

void FailCheckF64(f64 x) {
    if (std::isnan(x)) Fail(kInvalidArgument, "invalid operation: the result is not a number");
    Fail(kOverflow, "overflow: the result is too large for a double");
}

void FailDivisionByZero() { Fail(kDivisionByZero, "division by zero"); }

f64 Sqrt(f64 x) {
    if (x < 0) Fail(kInvalidArgument, "invalid argument: square root of " + GeneralText(x));
    return CheckF64(std::sqrt(x));
}

f64 Log(f64 x) {
    if (x <= 0) Fail(kInvalidArgument, "invalid argument: logarithm of " + GeneralText(x));
    return CheckF64(std::log(x));
}

f64 Exp(f64 x) { return CheckF64(std::exp(x)); }

f64 Pow(f64 base, f64 exponent) {
    if (base < 0 && std::isfinite(exponent) && std::trunc(exponent) != exponent) {
        Fail(kInvalidArgument,
             "invalid argument: " + GeneralText(base) + " to the power " + GeneralText(exponent));
    }
    if (base == 0 && exponent < 0) Fail(kDivisionByZero, "division by zero: 0 to a negative power");
    return CheckF64(std::pow(base, exponent));
}

i16 RoundToI16(f64 x) { return ToInteger<i16>(RoundHalfEven(x), x, "a 16-bit integer"); }
i32 RoundToI32(f64 x) { return ToInteger<i32>(RoundHalfEven(x), x, "a 32-bit integer"); }
i16 FloorToI16(f64 x) { return ToInteger<i16>(std::floor(x), x, "a 16-bit integer"); }

i16 AddI16(i32 a, i32 b) { return Narrow<i16>(std::int64_t(a) + b, "a 16-bit integer"); }
i16 SubI16(i32 a, i32 b) { return Narrow<i16>(std::int64_t(a) - b, "a 16-bit integer"); }
i16 MulI16(i32 a, i32 b) { return Narrow<i16>(std::int64_t(a) * b, "a 16-bit integer"); }

// The wide arguments may themselves overflow when added or multiplied; the
// builtins give the exact result's fit in 32 bits whatever happens.
i32 AddI32(std::int64_t a, std::int64_t b) {
    i32 result;
    if (__builtin_add_overflow(a, b, &result)) Fail(kOverflow, "overflow: 32-bit integer sum");
    return result;
}

i32 SubI32(std::int64_t a, std::int64_t b) {
    i32 result;
    if (__builtin_sub_overflow(a, b, &result)) Fail(kOverflow, "overflow: 32-bit integer difference");
    return result;
}

i32 MulI32(std::int64_t a, std::int64_t b) {
    i32 result;
    if (__builtin_mul_overflow(a, b, &result)) Fail(kOverflow, "overflow: 32-bit integer product");
    return result;
}

i16 NarrowI16(std::int64_t x) { return Narrow<i16>(x, "a 16-bit integer"); }
i32 NarrowI32(std::int64_t x) { return Narrow<i32>(x, "a 32-bit integer"); }

}  // namespace tremodal
