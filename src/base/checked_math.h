// Checked arithmetic. Analysis values live in singles and are worked out in
// doubles between two stores; every store, division, root, logarithm and
// power goes through these helpers, so that an overflow, a division by zero
// or an invalid operation becomes a numbered failure and never a NaN, an
// infinity or a wrapped integer in a file.
#pragma once

#include <cmath>
#include <limits>

#include "base/failure.h"

namespace tremodal {

// Half way between the largest single and the next power of two: a double at
// or beyond it rounds to an infinite single (the largest single has an odd
// last digit, so the tie goes up).
inline constexpr f64 kSingleOverflow = 0x1.ffffffp127;

static_assert(std::numeric_limits<f32>::is_iec559 && std::numeric_limits<f64>::is_iec559);

// Rounds a double to single the way the processor does, without a check: a
// value at or beyond kSingleOverflow becomes an infinity of its sign, and
// every later addition keeps it infinite. For the long running sums, which
// look once at their results and, on an infinity, work the sum again with
// StoreF32 to fail where the first store overflowed.
inline f32 RoundToSingle(f64 x) { return static_cast<f32>(x); }

[[noreturn]] void FailStoreF32(f64 x);

// Rounds a double to single on store. Fails with 6 when the value (or the
// rounded single) is infinite or not a number. Inline: the analysis stores
// hundreds of millions of values in a large run.
inline f32 StoreF32(f64 x) {
    // A NaN fails the comparison as well.
    if (!(x < kSingleOverflow && x > -kSingleOverflow)) FailStoreF32(x);
    return f32(x);
}

[[noreturn]] void FailCheckF64(f64 x);
[[noreturn]] void FailDivisionByZero();

// Checks an intermediate double: 6 for an infinity, 5 for a NaN. Inline,
// with only the failure out of line, as are the divisions: the double sums
// of the combination methods pass through them millions of times.
inline f64 CheckF64(f64 x) {
    if (!std::isfinite(x)) FailCheckF64(x);
    return x;
}

// a / b; fails with 11 when b is 0 (0 / 0 included).
inline f64 Div(f64 a, f64 b) {
    if (b == 0) FailDivisionByZero();
    return CheckF64(a / b);
}
// Square root; fails with 5 below 0.
f64 Sqrt(f64 x);
// Natural logarithm; fails with 5 at or below 0.
f64 Log(f64 x);
// e to the power x; fails with 6 on overflow.
f64 Exp(f64 x);
// base to the power exponent; fails with 5 for a negative base with a
// fractional exponent, 11 for 0 to a negative power, 6 on overflow.
f64 Pow(f64 base, f64 exponent);

// Float to integer, rounding half to even: 2.5 gives 2, 3.5 gives 4.
// Out of range (or NaN) fails with 6.
i16 RoundToI16(f64 x);
i32 RoundToI32(f64 x);
// Int to 16 bits: rounds down, -2.5 gives -3. Out of range fails with 6.
i16 FloorToI16(f64 x);

// 16- and 32-bit integer operations that fail with 6 on overflow.
i16 AddI16(i32 a, i32 b);
i16 SubI16(i32 a, i32 b);
i16 MulI16(i32 a, i32 b);
i32 AddI32(std::int64_t a, std::int64_t b);
i32 SubI32(std::int64_t a, std::int64_t b);
i32 MulI32(std::int64_t a, std::int64_t b);
// Narrows a wide integer, failing with 6 when it does not fit.
i16 NarrowI16(std::int64_t x);
i32 NarrowI32(std::int64_t x);

}  // namespace tremodal
