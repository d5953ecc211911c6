// The missing mass loads of a first pass, as a real run of TreModal writes
// them, on a mode that reaches nearly all of one equation's mass: what is
// left there is a small difference of two nearly equal figures, so the single
// that each mode's share M phi r passes through before it is squared shows in
// the loads.
#include <gtest/gtest.h>

#include <string>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using namespace testing;

TEST(ResidualMass, EachModesShareIsASingleBeforeItIsSquared) {
    // Equation 1 (node 2, x) has mass 5 and the mode's value 0.4472, close to
    // 1 / sqrt(5); equations 3 and 5 (nodes 3, 4, x) have mass 1 and no share.
    // The z equations have unit masses and lie across the x motion.
    ModelFixture f;
    f.WriteStandInCasepost();
    auto c = testing::FrameFrequencyCase();
    c.Eigenvalues = {100}, c.Shapes = {{0, 0.4472f, 0, 0, 0, 0, 0}}, c.Masses = {5, 1, 1, 1, 1, 1};
    // A flat curve of 2 whose first point gives the ZPA (at a period above
    // 0, which the report divides by).
    WriteFile(f.File(".URS1"), "0.03,2\r\n10,2\r\n-1\r\n");
    SetOptionsLine(f.File(".USM3"), "ZPZ Option", "ZPZ Option (1 is higest mode)          , 0 ");
    SetOptionsLine(f.File(".USM3"), "Missing Mass Case", "Missing Mass Case (1 is active)        , 1 ,10");

    // By hand: 5 x 0.4472000002861023 (the single of 0.4472) is
    // 2.2360000014305115, whose single is 2.2360000610351562; its square's
    // single is 4.999696254730225 and leaves 5 - 4.999696254730225 =
    // 3.037452697753906E-04 of the mass. Gamma is the same single, so the
    // modes miss 7 - 4.999696254730225 = 2.0003037452697754, exactly the
    // residual sum 3.037452697753906E-04 + 1 + 1: the factor is 1 and the
    // loads are twice the residual masses.

    // The lumped form splits a load over x and z by the angle, as doubles
    // of up to 15 digits; the square form writes the single alone. Its
    // terms off the diagonal play no part.
    const struct {
        int massForm;
        const char* lines;
    } forms[] = {
        {1, "NF,2,6.07490539550781E-04,,0\r\nNF,3,2,,0\r\nNF,4,2,,0\r\n"},
        {0, "NF,2,6.074905E-04\r\nNF,3,2\r\nNF,4,2\r\n"},
    };
    for (const auto& form : forms) {
        c.MassForm = form.massForm, c.OffDiagonal = 0.125;
        WriteFile(f.File(".H1"), example::FrequencyCaseBytes(c));
        ASSERT_EQ(f.RunTreModal("3/7/1/"), 0) << f.Stderr();
        const std::string loads = ReadFile(f.File(".L10"));
        const std::string expected = std::string("\r\nACOM, Missing Mass Case\r\n") + form.lines;
        EXPECT_TRUE(loads.ends_with(expected)) << loads;
    }
}

}  // namespace
}  // namespace tremodal
