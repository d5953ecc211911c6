#include "modal/modal_response.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::BytesF32;
using testing::BytesI16;
using testing::BytesI32;
using testing::Exists;
using testing::FailureOf;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

// Right-justified in an accelerations column of 11.
std::string Col(const std::string& text) { return std::string(11 - text.size(), ' ') + text; }

class ModalResponse : public ::testing::Test {
protected:
    // A model of the given size with unit spectrum, participation and
    // direction factors, ready for the caller to fill shapes and frequencies.
    void Build(int nodes, int modes, int dof) {
        s.Model.ModelPath = dir.File("BEAM");
        s.Model.NumNodes = f32(nodes);
        s.Freq.NumModes = modes;
        s.Freq.NumDof = dof;
        AllocateRunArrays(s);
        for (int m = 1; m <= modes; ++m) {
            s.Curve.ModalSpectrum(m) = 1;
            s.Participation(m) = 1;
            s.Freq.Omega(m) = f32(m);
            s.ModalDamping(m) = 0.05f;
        }
        for (int d = 1; d <= 6; ++d) s.Options.DirFactor(d) = 1;
        s.Options.ResultsCase = "1";
        s.Options.DampingRatio = 0.05f;
    }
    void SetDofs(int node, std::initializer_list<i32> eqs) {
        int k = 1;
        for (const i32 eq : eqs) s.Freq.NodeDof(node, k++) = eq;
    }

    TempDir dir;
    RunState s;
};

TEST_F(ModalResponse, ProductsRoundOnceAndAccelerationComesFromTheUnroundedProduct) {
    Build(1, 2, 2);
    s.Curve.ModalSpectrum(1) = 0.1f;
    s.Participation(1) = 1.3f;
    s.Options.DirFactor(1) = 0.7f;
    s.Freq.Omega(1) = 12.34f;
    s.Freq.ModeShape(1, 1) = 0.001f;
    s.Freq.ModeShape(0, 1) = 5;  // slot 0 takes no response
    // Translation: the period plays no part, a very short one included.
    s.Freq.Omega(2) = 1000;
    s.Freq.ModeShape(2, 2) = 0.5f;
    ComputeModalResponse(s, 1);

    EXPECT_EQ(s.ModalDisp(1, 1), 9.10000017e-05f);
    // From the rounded displacement it would come out 0.0138570806.
    EXPECT_EQ(s.ModalAccel(1, 1), 0.0138570797f);
    EXPECT_EQ(s.ModalDisp(0, 1), 0.0f);
    EXPECT_EQ(s.ModalAccel(0, 1), 0.0f);
    EXPECT_EQ(s.ModalDisp(2, 2), 0.35f);
    EXPECT_EQ(s.ModalAccel(2, 2), 350000.0f);
}

TEST_F(ModalResponse, RotationScalesModesUnderPointFourSecondsByTwoPiOverPointFour) {
    Build(1, 3, 1);
    s.Options.DirFactor(5) = 2;
    s.Freq.Omega(1) = 15.707963f;   // 2 pi / Omega rounds to exactly 0.4
    s.Freq.Omega(2) = 15.7079639f;  // the next single up: just under 0.4
    s.Freq.Omega(3) = 1;
    for (int m = 1; m <= 3; ++m) s.Freq.ModeShape(1, m) = 1;
    ComputeModalResponse(s, 5);
    EXPECT_EQ(s.ModalDisp(1, 1), 2.0f);
    EXPECT_EQ(s.ModalDisp(1, 2), 31.415926f);  // 2 x 2 pi / 0.4 as a single
    EXPECT_EQ(s.ModalDisp(1, 3), 2.0f);

    // The same modes under a translation keep the plain factor.
    s.Options.DirFactor(3) = 2;
    ComputeModalResponse(s, 3);
    EXPECT_EQ(s.ModalDisp(1, 2), 2.0f);
}

TEST_F(ModalResponse, ResponseFileHoldsEveryModeThenTheMissingMassBlock) {
    Build(2, 2, 4);
    SetDofs(1, {1, 2, 0, 0, 0, 0});
    SetDofs(2, {3, 0, 4, 0, 0, 0});
    for (int e = 1; e <= 4; ++e) {
        s.Freq.ModeShape(e, 1) = 0.25f * e;
        s.Freq.ModeShape(e, 2) = -0.5f * e;
    }
    s.Options.CombMethod = 3;
    s.MissMassRead = 1;
    s.Freq.Omega(3) = 99;
    s.ModalDamping(3) = 0.07f;
    for (int e = 0; e <= 4; ++e) s.MissMassDof(e) = 10.0f + e;
    // An older, longer file keeps its tail behind the new data.
    const std::string old(16 + 8 * 3 + 48 * 2 * 3 + 7, 'Q');
    WriteFile(dir.File("BEAM.HS1"), old);
    ComputeModalResponse(s, 1);

    const std::string zero = BytesF32(0);
    std::string expected = BytesI16(2) + BytesI32(4) + BytesI32(3) + BytesF32(0.05f) + BytesI16(3);
    expected +=
        BytesF32(1) + BytesF32(0.05f) + BytesF32(2) + BytesF32(0.05f) + BytesF32(99) + BytesF32(0.07f);
    auto block = [&](f32 a1, f32 a2, f32 a3, f32 a4, f32 none) {
        return BytesI32(1) + BytesF32(a1) + BytesI32(2) + BytesF32(a2) + BytesI32(0) + BytesF32(none) +
               BytesI32(0) + BytesF32(none) + BytesI32(0) + BytesF32(none) + BytesI32(0) + BytesF32(none) +
               BytesI32(3) + BytesF32(a3) + BytesI32(0) + BytesF32(none) + BytesI32(4) + BytesF32(a4) +
               BytesI32(0) + BytesF32(none) + BytesI32(0) + BytesF32(none) + BytesI32(0) + BytesF32(none);
    };
    expected += block(0.25f, 0.5f, 0.75f, 1.0f, 0);
    expected += block(-0.5f, -1.0f, -1.5f, -2.0f, 0);
    // Freedoms without an equation carry slot 0 of the missing mass case.
    expected += block(11, 12, 13, 14, 10);
    expected += "QQQQQQQ";
    EXPECT_EQ(ReadFile(dir.File("BEAM.HS1")), expected);
    EXPECT_FALSE(Exists(dir.File("BEAM.SEA-1.O.1")));
}

TEST_F(ModalResponse, AccelerationsFileListsNodesByModeThenTheirSrssAndAbsSums) {
    Build(2, 2, 3);
    SetDofs(1, {1, 2, 0, 0, 0, 0});
    SetDofs(2, {0, 0, 3, 0, 0, 0});
    s.Freq.Omega(1) = 2;
    s.Freq.Omega(2) = 4;
    // Accelerations: shape x Omega squared.
    s.Freq.ModeShape(1, 1) = 0.5f;   //  2
    s.Freq.ModeShape(1, 2) = 0.25f;  //  4
    s.Freq.ModeShape(2, 1) = -1;     // -4
    s.Freq.ModeShape(3, 1) = 0.75f;  //  3
    s.Freq.ModeShape(3, 2) = -0.5f;  // -8
    s.Options.CreateAccelFile = 1;
    s.Options.ResultsCase = " 15";
    // The missing mass response stays out of the sums.
    s.MissMassRead = 1;
    s.MissMassDof(1) = 1000;
    s.Freq.Omega(3) = 1;
    ComputeModalResponse(s, 2);

    const std::string z = Col("0.000E00");
    const std::string text = ReadFile(dir.File("BEAM.SEA-2.O.15"));
    EXPECT_EQ(
        text,
        "Node  Mode   Period     x          y          z          xr         yr         zr!\r\n"
        " 1    1      3.142" +
            Col("2.000E00") + Col("-4.000E00") + z + z + z + z + "\r\n" + " 1    2      1.571" +
            Col("4.000E00") + z + z + z + z + z + "\r\n" + " 2    1      3.142" + z + z + Col("3.000E00") +
            z + z + z + "\r\n" + " 2    2      1.571" + z + z + Col("-8.000E00") + z + z + z + "\r\n" +
            "Node CombType     x          y          z          xr         yr         zr!  \r\n"
            " 1   SRSS  " +
            Col("4.472E00") + Col("4.000E00") + z + z + z + z + "\r\n" + "     ABS   " + Col("6.000E00") +
            Col("4.000E00") + z + z + z + z + "\r\n" + " 2   SRSS  " + z + z + Col("8.544E00") + z + z + z +
            "\r\n" + "     ABS   " + z + z + Col("1.100E01") + z + z + z + "\r\n");
}

TEST_F(ModalResponse, NodeNumbersOfFourDigitsPushTheTabToTheNextLine) {
    Build(1000, 1, 1);
    SetDofs(1000, {1, 0, 0, 0, 0, 0});
    s.Freq.Omega(1) = 2;
    s.Freq.ModeShape(1, 1) = 0.5f;
    s.Options.CreateAccelFile = 1;
    ComputeModalResponse(s, 1);

    const std::string z = Col("0.000E00");
    const std::string text = ReadFile(dir.File("BEAM.SEA-1.O.1"));
    const std::string node999 = " 999  1      3.142" + z + z + z + z + z + z + "\r\n";
    const std::string node1000 =
        " 1000 \r\n      1      3.142" + Col("2.000E00") + z + z + z + z + z + "\r\n";
    EXPECT_NE(text.find(node999 + node1000 + "Node CombType"), std::string::npos);
    const std::string tail = " 1000 \r\n     SRSS  " + Col("2.000E00") + z + z + z + z + z + "\r\n" +
                             "     ABS   " + Col("2.000E00") + z + z + z + z + z + "\r\n";
    ASSERT_GE(text.size(), tail.size());
    EXPECT_EQ(text.substr(text.size() - tail.size()), tail);
}

}  // namespace
}  // namespace tremodal
