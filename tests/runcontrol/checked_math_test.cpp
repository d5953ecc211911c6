#include "runcontrol/checked_math.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

#include <cmath>
#include <functional>
#include <limits>

namespace tremodal {
namespace {

using testing::FailureOf;
using testing::MessageOf;

constexpr f64 kInf = std::numeric_limits<f64>::infinity();
constexpr f64 kNaN = std::numeric_limits<f64>::quiet_NaN();
constexpr std::int64_t kI64Max = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kI64Min = std::numeric_limits<std::int64_t>::min();
constexpr i32 kI32Max = std::numeric_limits<i32>::max();
constexpr i32 kI32Min = std::numeric_limits<i32>::min();

TEST(CheckedMath, StoreRoundsToSingleAndFailsBeyondIt) {
    EXPECT_EQ(StoreF32(0.1), 0.1f);
    EXPECT_EQ(StoreF32(1e-50), 0.0f);
    const f32 largest = std::numeric_limits<f32>::max();
    EXPECT_EQ(StoreF32(f64(largest)), largest);
    EXPECT_EQ(StoreF32(0x1.fffffefffffffp127), largest);        // just below the half-way point
    EXPECT_EQ(FailureOf([] { StoreF32(0x1.ffffffp127); }), 6);  // half way rounds to infinity
    EXPECT_EQ(FailureOf([] { StoreF32(-1e39); }), 6);
    EXPECT_EQ(FailureOf([] { StoreF32(kInf); }), 6);
    EXPECT_EQ(FailureOf([] { StoreF32(kNaN); }), 6);
    EXPECT_EQ(MessageOf([] { StoreF32(1e39); }), "overflow: 1E+39 does not fit a single");
}

TEST(CheckedMath, IntermediatesFailOnInfinityAndNaN) {
    EXPECT_EQ(CheckF64(1.5), 1.5);
    EXPECT_EQ(FailureOf([] { CheckF64(kInf); }), 6);
    EXPECT_EQ(FailureOf([] { CheckF64(kNaN); }), 5);
}

TEST(CheckedMath, DivisionByZeroFailsWithEleven) {
    EXPECT_EQ(Div(1, 4), 0.25);
    EXPECT_EQ(FailureOf([] { Div(1, 0); }), 11);
    EXPECT_EQ(FailureOf([] { Div(0, 0); }), 11);
    EXPECT_EQ(FailureOf([] { Div(1, -0.0); }), 11);
    EXPECT_EQ(FailureOf([] { Div(1e300, 1e-300); }), 6);
    EXPECT_EQ(MessageOf([] { Div(1, 0); }), "division by zero");
}

TEST(CheckedMath, RootsLogarithmsAndExponentialsCheckTheirDomain) {
    EXPECT_EQ(Sqrt(6.25), 2.5);
    EXPECT_EQ(FailureOf([] { Sqrt(-1e-300); }), 5);
    EXPECT_EQ(Log(1), 0);
    EXPECT_EQ(FailureOf([] { Log(0); }), 5);
    EXPECT_EQ(FailureOf([] { Log(-1); }), 5);
    EXPECT_EQ(Exp(0), 1);
    EXPECT_EQ(Exp(-1000), 0);
    EXPECT_EQ(FailureOf([] { Exp(710); }), 6);
    EXPECT_EQ(MessageOf([] { Sqrt(-4); }), "invalid argument: square root of -4");
}

TEST(CheckedMath, PowerFailsForNegativeBaseFractionZeroBaseAndOverflow) {
    EXPECT_EQ(Pow(2, 10), 1024);
    EXPECT_EQ(Pow(-2, 3), -8);
    EXPECT_EQ(Pow(4, 0.5), 2);
    EXPECT_EQ(Pow(0, 0), 1);
    EXPECT_EQ(FailureOf([] { Pow(-8, 1.0 / 3.0); }), 5);
    EXPECT_EQ(FailureOf([] { Pow(0, -1); }), 11);
    EXPECT_EQ(FailureOf([] { Pow(10, 400); }), 6);
    EXPECT_EQ(MessageOf([] { Pow(-8, 0.5); }), "invalid argument: -8 to the power 0.5");
}

TEST(CheckedMath, RoundToIntegerGoesHalfToEven) {
    EXPECT_EQ(RoundToI16(2.5), 2);
    EXPECT_EQ(RoundToI16(3.5), 4);
    EXPECT_EQ(RoundToI16(-2.5), -2);
    EXPECT_EQ(RoundToI16(-3.5), -4);
    EXPECT_EQ(RoundToI16(-0.5), 0);
    EXPECT_EQ(RoundToI16(2.5000000000000004), 3);
    EXPECT_EQ(RoundToI16(0.49999999999999994), 0);
    EXPECT_EQ(RoundToI16(-0.49999999999999994), 0);
    EXPECT_EQ(RoundToI16(32767.4), 32767);
    EXPECT_EQ(RoundToI16(-32768.5), -32768);
    EXPECT_EQ(FailureOf([] { RoundToI16(32767.5); }), 6);
    EXPECT_EQ(FailureOf([] { RoundToI16(-32768.6); }), 6);
    EXPECT_EQ(FailureOf([] { RoundToI16(kNaN); }), 6);
    EXPECT_EQ(RoundToI32(2147483647.4), kI32Max);
    EXPECT_EQ(RoundToI32(-2147483648.5), kI32Min);
    EXPECT_EQ(FailureOf([] { RoundToI32(2147483647.5); }), 6);
    EXPECT_EQ(FailureOf([] { RoundToI32(1e10); }), 6);
    EXPECT_EQ(FailureOf([] { RoundToI32(-kInf); }), 6);
    EXPECT_EQ(MessageOf([] { RoundToI16(40000); }), "overflow: 40000 does not fit a 16-bit integer");
}

TEST(CheckedMath, FloorToI16RoundsDown) {
    EXPECT_EQ(FloorToI16(-2.5), -3);
    EXPECT_EQ(FloorToI16(2.9), 2);
    EXPECT_EQ(FloorToI16(-32768.0), -32768);
    EXPECT_EQ(FloorToI16(32767.9), 32767);
    EXPECT_EQ(FailureOf([] { FloorToI16(-32768.1); }), 6);
    EXPECT_EQ(FailureOf([] { FloorToI16(32768); }), 6);
    EXPECT_EQ(FailureOf([] { FloorToI16(kNaN); }), 6);
}

TEST(CheckedMath, SixteenBitOperationsFailOnOverflow) {
    EXPECT_EQ(AddI16(32766, 1), 32767);
    EXPECT_EQ(SubI16(-32767, 1), -32768);
    EXPECT_EQ(MulI16(181, 181), 32761);
    EXPECT_EQ(MulI16(-256, 128), -32768);
    EXPECT_EQ(FailureOf([] { AddI16(32767, 1); }), 6);
    EXPECT_EQ(FailureOf([] { SubI16(-32768, 1); }), 6);
    EXPECT_EQ(FailureOf([] { MulI16(256, 128); }), 6);
    EXPECT_EQ(FailureOf([] { MulI16(65536, 65536); }), 6);  // would wrap to 0 in 32 bits
    EXPECT_EQ(NarrowI16(-32768), -32768);
    EXPECT_EQ(FailureOf([] { NarrowI16(32768); }), 6);
    EXPECT_EQ(MessageOf([] { AddI16(32767, 1); }), "overflow: 32768 does not fit a 16-bit integer");
}

TEST(CheckedMath, ThirtyTwoBitOperationsFailOnOverflowWithoutWrapping) {
    EXPECT_EQ(AddI32(kI32Max - 1, 1), kI32Max);
    EXPECT_EQ(AddI32(kI64Max, kI64Min), -1);
    EXPECT_EQ(SubI32(kI32Min + 1, 1), kI32Min);
    EXPECT_EQ(MulI32(46340, 46340), 2147395600);
    EXPECT_EQ(FailureOf([] { AddI32(kI32Max, 1); }), 6);
    EXPECT_EQ(FailureOf([] { AddI32(kI64Max, kI64Max); }), 6);
    EXPECT_EQ(FailureOf([] { SubI32(kI32Min, 1); }), 6);
    EXPECT_EQ(FailureOf([] { SubI32(0, kI32Min); }), 6);
    EXPECT_EQ(FailureOf([] { MulI32(46341, 46341); }), 6);
    EXPECT_EQ(FailureOf([] { MulI32(kI64Min, -1); }), 6);
    EXPECT_EQ(FailureOf([] { MulI32(std::int64_t(1) << 32, std::int64_t(1) << 32); }), 6);
    EXPECT_EQ(NarrowI32(kI32Min), kI32Min);
    EXPECT_EQ(FailureOf([] { NarrowI32(std::int64_t(kI32Max) + 1); }), 6);
    EXPECT_EQ(MessageOf([] { NarrowI32(-2147483649); }),
              "overflow: -2147483649 does not fit a 32-bit integer");
}

}  // namespace
}  // namespace tremodal
