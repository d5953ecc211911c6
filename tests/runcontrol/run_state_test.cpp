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

TEST(RunState, EveryRunGetsFreshZeroedArraysOfTheHeaderSizes) {
    RunState s;
    s.Model.NumNodes = 4;
    s.Freq.NumModes = 10;
    s.Freq.NumDof = 20;
    AllocateRunArrays(s);
    s.ModalDisp(20, 10) = 1;
    s.Freq.Omega(11) = 2;  // the slot behind the last mode is the pseudo-mode's
    s.Freq.NodeDof(4, 6) = 3;
    EXPECT_EQ(s.ModalAccel.Upper1(), 20);
    EXPECT_EQ(s.ModalAccel.Upper2(), 10);
    EXPECT_EQ(s.ModalDamping.Upper(), 11);
    EXPECT_EQ(s.MissMassNodal.Upper1(), 4);

    // A second, smaller case keeps nothing of the first.
    s.Freq.NumModes = 3;
    s.Freq.NumDof = 5;
    AllocateRunArrays(s);
    EXPECT_EQ(s.ModalDisp(5, 3), 0.0f);
    EXPECT_EQ(s.Freq.Omega(4), 0.0f);
    EXPECT_EQ(s.Freq.NodeDof(4, 6), 0);
    EXPECT_EQ(FailureOf([&] { s.ModalDisp(6, 1); }), 9);
    EXPECT_EQ(FailureOf([&] { s.Freq.Omega(5); }), 9);

    // A count that cannot be had is an out-of-memory failure, not a crash.
    s.Freq.NumModes = 2000000000;
    s.Freq.NumDof = 2000000000;
    EXPECT_EQ(FailureOf([&] { AllocateRunArrays(s); }), 7);
}

}  // namespace
}  // namespace tremodal
