#include "modal/response_curve.h"

#include <gtest/gtest.h>

#include <bit>
#include <string>
#include <tuple>

#include "support/test_support.h"

namespace tremodal {
namespace {

using namespace testing;

class SpectrumCurveRead : public ::testing::Test {
protected:
    // A run with the given mode frequencies and the curve file's text.
    void Build(std::initializer_list<f32> omegas, const std::string& curve) {
        s.Ui = &host;
        host.Messages.clear();
        s.Freq.NumModes = i32(omegas.size());
        s.Freq.NumDof = 1;
        AllocateRunArrays(s);
        i32 m = 1;
        for (const f32 w : omegas) s.Freq.Omega(m++) = w;
        s.Options.SpectrumFile = dir.File("MODEL.URS1");
        WriteFile(s.Options.SpectrumFile, curve);
        // Values as interpolated, no factor.
        s.Options.SpectrumType = 9, s.Options.CurveFactor = 1, s.Options.ZpaHighestMode = 0;
    }
    f32 Spectrum(i32 m) { return s.Curve.ModalSpectrum(m); }

    TempDir dir;
    FakeHost host;
    RunState s;
};

// Mode 1 at T = 1.0 inside the table, mode 2 beyond its end, mode 3 before it.
const char* const kTwoPoints = "0.5,2.0\r\n1.5,4.0\r\n-1\r\n";

// Log-log interpolation keeps the curve in its own units; 0x4046374d is
// 3.0971253, and the logarithms leave the end values a bit off.
TEST_F(SpectrumCurveRead, LinearAndLogLogInterpolationAndEndValues) {
    for (const i16 interp : {0, 1}) {
        Build({6.284f, 1.0f, 100.0f}, kTwoPoints);
        s.Options.InterpMethod = interp;
        ReadSpectrumCurve(s);
        const float off = interp ? 1e-6f : 0;
        EXPECT_TRUE(host.Messages.empty() && s.Curve.CurvePoints == 2 && s.Curve.CurveValue(1) == 2.0f);
        EXPECT_EQ(Spectrum(1), interp ? std::bit_cast<f32>(0x4046374du) : 3.0f);
        EXPECT_NEAR(Spectrum(2), 4.0f, off);
        EXPECT_NEAR(Spectrum(3), 2.0f, off);
        EXPECT_NEAR(s.Curve.ZpaPeriod, 0.5f, off / 10);
    }
}

TEST_F(SpectrumCurveRead, EveryFaultEndsInTheOneMessage) {
    // No file, no marker, a value missing, the log of a zero value and of a
    // negative period (linear takes the 0); a hundred points (0.01 k, k) fit,
    // a marker in the place of a 101st.
    std::string hundred;
    for (int k = 1; k <= 100; ++k) hundred += std::to_string(0.01 * k) + "," + std::to_string(k) + "\n";
    // clang-format off
    const std::tuple<std::string, i16, std::size_t> cases[] = {
        {"", 0, 1}, {"0.5,2.0\n1.5,4.0\n", 0, 1}, {"0.5,2.0\n1.5\n", 0, 1}, {"0.5,0\n1.5,4.0\n-1\n", 1, 1},
        {"-0.5,2\n1.5,4.0\n-1\n", 1, 1}, {"0.5,0\n1.5,4.0\n-1\n", 0, 0}, {hundred + "-1\n", 0, 0},
        {hundred + "1.1,101\n-1\n", 0, 1}};
    // clang-format on
    for (const auto& [curve, interp, count] : cases) {
        Build({6.284f, 3.0f}, curve);
        s.Options.InterpMethod = interp;
        if (curve.empty()) s.Options.SpectrumFile = dir.File("NONE.URS1");
        ReadSpectrumCurve(s);
        EXPECT_EQ(host.Messages, std::vector<std::string>(count, "Error in Spectrum Data")) << curve;
    }

    // A mode that meets two equal periods exactly divides 0 by 0; the modes
    // before it keep their values, the others the zeros they had.
    Build({6.284f / 1.25f, 6.284f, 3.0f}, "1.0,3\n1.0,4\n1.5,5\n-1\n");
    ReadSpectrumCurve(s);
    EXPECT_TRUE(host.Messages.size() == 1 && s.Curve.CurvePoints == 3);
    EXPECT_TRUE(Spectrum(1) != 0 && Spectrum(2) == 0 && Spectrum(3) == 0);
}

TEST_F(SpectrumCurveRead, TheFirstOfTwoEqualHighestValuesIsThePeak) {
    // The ZPA period, point 1's 0.5 s, lies beyond the peak at 0.2 s and
    // before the one at 0.8 s: the missing mass warning follows the first.
    for (const bool earlyFirst : {true, false}) {
        Build({6.284f}, earlyFirst ? "0.5,1\n0.2,3\n0.8,3\n1.0,1\n-1\n" : "0.5,1\n0.8,3\n0.2,3\n1.0,1\n-1\n");
        s.Options.MissMassOn = 1;
        ReadSpectrumCurve(s);
        EXPECT_EQ(host.Messages,
                  std::vector<std::string>(earlyFirst ? 1 : 0, "ZPA Period > Tmax Period - Check"));
    }
}

}  // namespace
}  // namespace tremodal
