// The readers of ccx's output on excerpts of what ccx 2.20 wrote for a small
// frame: each figure lands in its table, its mode and its column, and a .frd
// line whose values run together splits at its fixed columns.
#include "ccx/ccx_files.h"

#include <gtest/gtest.h>

namespace tremodal::ccx {
namespace {

const char* const kDat = R"(
     E I G E N V A L U E   O U T P U T

 MODE NO    EIGENVALUE                       FREQUENCY   
                                     REAL PART            IMAGINARY PART
                           (RAD/TIME)      (CYCLES/TIME     (RAD/TIME)

      1   0.4692984E+03   0.2166330E+02   0.3447821E+01   0.0000000E+00
      2   0.7176256E+04   0.8471278E+02   0.1348246E+02   0.0000000E+00

     P A R T I C I P A T I O N   F A C T O R S

MODE NO.   X-COMPONENT     Y-COMPONENT     Z-COMPONENT     X-ROTATION      Y-ROTATION      Z-ROTATION

      1  -0.7313338E+00   0.8472065E-16  -0.3137249E+03  -0.1560438E+04   0.6274509E+03  -0.1411159E-10
      2   0.7293647E-03  -0.6230200E+00   0.7293642E-03  -0.2689265E-08  -0.3863258E+03   0.3353384E-10

     E F F E C T I V E   M O D A L   M A S S

MODE NO.   X-COMPONENT     Y-COMPONENT     Z-COMPONENT     X-ROTATION      Y-ROTATION      Z-ROTATION

      1   0.5348492E+00   0.7177588E-32   0.9842331E+05   0.2434967E+07   0.3936946E+06   0.1991371E-21
      2   0.5319729E-06   0.3881539E+00   0.5319721E-06   0.7232148E-17   0.1492477E+06   0.1124519E-20
TOTAL     0.5348497E+00   0.3881539E+00   0.9842331E+05   0.2434967E+07   0.5429423E+06   0.1991371E-21

     T O T A L   E F F E C T I V E   M A S S

MODE NO.   X-COMPONENT     Y-COMPONENT     Z-COMPONENT     X-ROTATION      Y-ROTATION      Z-ROTATION

          0.8000000E+04   0.7000000E+04   0.6000000E+04   0.1260000E+06   0.1180000E+06   0.1360000E+06


                    E I G E N V A L U E    N U M B E R     1


 displacements (vx,vy,vz) for set TREMODALNODES and time  0.1000000E+01

         5 -4.423358E-03 -2.100261E-03 -4.035625E-03
         1  0.000000E+00 -3.308722E-24  0.000000E+00

                    E I G E N V A L U E    N U M B E R     2


 displacements (vx,vy,vz) for set TREMODALNODES and time  0.1000000E+01

         5  8.747305E-05 -2.586373E-03 -1.040194E-02
)";

TEST(CcxFiles, EachFigureLandsInItsTableModeAndColumn) {
    const ModalTables t = ReadModalTables(kDat);
    EXPECT_EQ(t.Eigenvalues, (std::vector<double>{469.2984, 7176.256}));
    ASSERT_EQ(t.Participation.size(), 2u);
    EXPECT_EQ(t.Participation[0][0], -0.7313338);
    EXPECT_EQ(t.Participation[1][1], -0.6230200);
    EXPECT_EQ(t.Participation[0][5], -0.1411159E-10);
    ASSERT_EQ(t.EffectiveMass.size(), 2u);
    EXPECT_EQ(t.EffectiveMass[0][2], 0.9842331E+05);
    EXPECT_EQ(t.EffectiveMass[1][1], 0.3881539);
    EXPECT_EQ(t.TotalMass, (std::array<double, 6>{8000, 7000, 6000, 126000, 118000, 136000}));

    const std::vector<NodeValues> shapes = ReadPrintedDisplacements(kDat);
    ASSERT_EQ(shapes.size(), 2u);
    EXPECT_EQ(shapes[0].at(5), (std::array<double, 3>{-4.423358E-03, -2.100261E-03, -4.035625E-03}));
    EXPECT_EQ(shapes[0].at(1)[1], -3.308722E-24);
    EXPECT_EQ(shapes[1].size(), 1u);
    EXPECT_EQ(shapes[1].at(5)[2], -1.040194E-02);

    const std::vector<NodeValues> frd = ReadFrdDisplacements(
        "    1PSTEP                         1           1           1\n"
        " -4  DISP        4    1\n"
        " -5  D1          1    2    1    0\n"
        " -1         9-3.22675E-05 6.14911E-06-4.92648E-05\n"
        " -1     12345 3.21802E-05-6.14911E-06-4.44724E-05\n"
        " -3\n"
        " -4  STRESS      6    1\n"
        " -1        10 1.00000E+00 2.00000E+00 3.00000E+00\n");
    ASSERT_EQ(frd.size(), 1u);
    EXPECT_EQ(frd[0].at(9), (std::array<double, 3>{-3.22675E-05, 6.14911E-06, -4.92648E-05}));
    EXPECT_EQ(frd[0].at(12345)[1], -6.14911E-06);
    EXPECT_EQ(frd[0].count(10), 0u);

    const std::vector<Freedom> dofs = ReadDofList("3.1\n3.2\n12.3\n");
    ASSERT_EQ(dofs.size(), 3u);
    EXPECT_EQ(dofs[2].Node, 12);
    EXPECT_EQ(dofs[2].Number, 3);
    const std::vector<MatrixTerm> terms = ReadMatrixTerms("1 1  3.964E+03\n   2 17  -1.5e-07\n");
    ASSERT_EQ(terms.size(), 2u);
    EXPECT_EQ(terms[1].Row, 2);
    EXPECT_EQ(terms[1].Column, 17);
    EXPECT_EQ(terms[1].Value, -1.5e-07);
}

}  // namespace
}  // namespace tremodal::ccx
