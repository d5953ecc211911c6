#include "results/curve_report.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;

class SpectrumReport : public ::testing::Test {
protected:
    void SetUp() override {
        s.Curve.CurvePoints = 2;
        s.Curve.CurvePeriod(1) = 0.1f;
        s.Curve.CurveValue(1) = 0.5f;
        s.Curve.CurvePeriod(2) = 2.5f;
        s.Curve.CurveValue(2) = 1234.5678f;
        s.Options.CurveFactor = 0.5f;
        s.Freq.NumModes = 2;
        s.Freq.Omega.Allocate(3);
        s.Freq.Omega(1) = 10;
        s.Freq.Omega(2) = 62.831853f;
        s.Curve.ModalSpectrum.Allocate(2);
        s.Curve.ModalSpectrum(1) = 0.0123f;
        s.Curve.ModalSpectrum(2) = 0.0004f;
        s.List1 = {"before"};
    }

    RunState s;
};

TEST_F(SpectrumReport, MetricModelShowsMillimetresInchModelInches) {
    s.Model.UnitSystem = 0;
    ReportSpectrum(s);
    const std::vector<std::string> expected = {
        "before",
        " ",
        "Response Spectrum Curve",
        "Period (Secs)      Value ",
        "      0.100        0.5000",
        "      2.500     1234.5678",
        " ",
        "Response Spectrum Curve - Modal Points",
        "Curve Factor  .5",
        "Mode  Period (Secs)     Disp(mm)    Velocity(ins/s)  Accel(ins/s2)",
        " 1        0.628       12.3000        0.1230        1.2300",
        " 2        0.100        0.4000        0.0251        1.5791",
    };
    EXPECT_EQ(s.List1, expected);

    // Inches: the displacement unscaled, velocity and acceleration the same.
    s.List1.clear();
    s.Model.UnitSystem = 1;
    s.Options.CurveFactor = -2;
    ReportSpectrum(s);
    EXPECT_EQ(s.List1[7], "Curve Factor -2");
    EXPECT_EQ(s.List1[8], "Mode  Period (Secs)     Disp(ins)    Velocity(ins/s)  Accel(ins/s2)");
    EXPECT_EQ(s.List1[9], " 1        0.628        0.0123        0.1230        1.2300");
    EXPECT_EQ(s.List1[10], " 2        0.100        0.0004        0.0251        1.5791");
}

TEST_F(SpectrumReport, OnePointCurveAndManyModes) {
    s.Curve.CurvePoints = 1;
    s.Freq.NumModes = 100;
    s.Freq.Omega.Allocate(101);
    s.Curve.ModalSpectrum.Allocate(100);
    for (int m = 1; m <= 100; ++m) {
        s.Freq.Omega(m) = 2;
        s.Curve.ModalSpectrum(m) = 0.25f;
    }
    s.List1.clear();
    ReportSpectrum(s);
    EXPECT_EQ(s.List1[3], "      0.100        0.5000");
    EXPECT_EQ(s.List1[4], " ");
    EXPECT_EQ(s.List1.size(), 108u);
    EXPECT_EQ(s.List1[8], " 1        3.142      250.0000        0.5000        1.0000");
    EXPECT_EQ(s.List1[107], " 100      3.142      250.0000        0.5000        1.0000");
}

TEST_F(SpectrumReport, ZeroFrequencyOrHugeProductFails) {
    s.Freq.Omega(2) = 0;
    EXPECT_EQ(FailureOf([&] { ReportSpectrum(s); }), kDivisionByZero);
    s.Freq.Omega(2) = 1e20f;
    s.Curve.ModalSpectrum(2) = 1;
    EXPECT_EQ(FailureOf([&] { ReportSpectrum(s); }), kOverflow);
}

}  // namespace
}  // namespace tremodal
