#include "runcontrol/run_state.h"

#include <gtest/gtest.h>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

TEST(RunState, ArraysRunFromZeroWithTheFirstIndexFast) {
    Array2<f32> a;
    a.Allocate(3, 2);  // (0..3, 0..2)
    a(2, 1) = 5;
    a(3, 2) = 7;
    // The slot of A(i, j) is j * (upper bound of i + 1) + i, as in the files.
    EXPECT_EQ(a.Data()[1 * 4 + 2], 5.0f);
    EXPECT_EQ(a.Data()[2 * 4 + 3], 7.0f);
    EXPECT_EQ(FailureOf([&] { a(4, 0); }), 9);
    EXPECT_EQ(FailureOf([&] { a(0, 3); }), 9);
    EXPECT_EQ(FailureOf([&] { a(-1, 0); }), 9);

    Array1<i16> b(6);
    EXPECT_EQ(b(6), 0);
    EXPECT_EQ(FailureOf([&] { b(7); }), 9);
    Array1<f32> unallocated;
    EXPECT_EQ(FailureOf([&] { unallocated(0); }), 9);
    EXPECT_EQ(FailureOf([&] { unallocated.Allocate(-2); }), 9);
}

}  // namespace
}  // namespace tremodal
