#include "modal/response_curve.h"

#include <gtest/gtest.h>

#include <bit>
#include <cstdint>
#include <string>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FakeHost;
using testing::TempDir;
using testing::WriteFile;

std::uint32_t Bits(f32 x) { return std::bit_cast<std::uint32_t>(x); }

class SpectrumCurveRead : public ::testing::Test {
protected:
    // A run with the given mode frequencies and the curve file's text.
    void Build(std::initializer_list<f32> omegas, const std::string& curve) {
        s.Ui = &host;
        s.Freq.NumModes = i32(omegas.size());
        s.Freq.NumDof = 1;
        AllocateRunArrays(s);
        i32 m = 1;
        for (const f32 w : omegas) s.Freq.Omega(m++) = w;
        s.Options.SpectrumFile = dir.File("MODEL.URS1");
        WriteFile(s.Options.SpectrumFile, curve);
        s.Options.SpectrumType = 9;  // values as interpolated, no factor
        s.Options.CurveFactor = 1;
        s.Options.ZpaHighestMode = 0;
    }
    f32 Spectrum(i32 m) { return s.Curve.ModalSpectrum(m); }

    TempDir dir;
    FakeHost host;
    RunState s;
};

// Mode 1 at T = 1.0 inside the table, mode 2 beyond its end, mode 3 before it.
const char* const kTwoPoints = "0.5,2.0\r\n1.5,4.0\r\n-1\r\n";

TEST_F(SpectrumCurveRead, LinearInterpolationAndEndValues) {
    Build({6.284f, 1.0f, 100.0f}, kTwoPoints);
    ReadSpectrumCurve(s);
    EXPECT_TRUE(host.Messages.empty());
    EXPECT_EQ(s.Curve.CurvePoints, 2);
    EXPECT_EQ(s.Curve.CurvePeriod(2), 1.5f);
    EXPECT_EQ(s.Curve.CurveValue(2), 4.0f);
    EXPECT_EQ(Spectrum(1), 3.0f);
    EXPECT_EQ(Spectrum(2), 4.0f);
    EXPECT_EQ(Spectrum(3), 2.0f);
    EXPECT_EQ(s.Curve.ZpaPeriod, 0.5f);
}

TEST_F(SpectrumCurveRead, LogLogInterpolationKeepsTheCurveInItsOwnUnits) {
    Build({6.284f, 1.0f, 100.0f}, kTwoPoints);
    s.Options.InterpMethod = 1;
    ReadSpectrumCurve(s);
    EXPECT_TRUE(host.Messages.empty());
    EXPECT_EQ(Bits(Spectrum(1)), 0x4046374du);  // 3.0971253
    EXPECT_NEAR(Spectrum(2), 4.0f, 1e-6);
    EXPECT_NEAR(Spectrum(3), 2.0f, 1e-6);
    EXPECT_EQ(s.Curve.CurveValue(1), 2.0f);
    EXPECT_NEAR(s.Curve.ZpaPeriod, 0.5f, 1e-7);
}

TEST_F(SpectrumCurveRead, EveryFaultEndsInTheOneMessage) {
    // A hundred points (0.01 k, k) fit, a marker in the place of a 101st.
    std::string hundred;
    for (int k = 1; k <= 100; ++k) hundred += std::to_string(0.01 * k) + "," + std::to_string(k) + "\n";
    const auto messageCount = [&](const std::string& curve, i16 interp, bool removeFile = false) {
        Build({6.284f, 3.0f}, curve);
        s.Options.InterpMethod = interp;
        if (removeFile) s.Options.SpectrumFile = dir.File("NONE.URS1");
        host.Messages.clear();
        ReadSpectrumCurve(s);
        for (const auto& text : host.Messages) EXPECT_EQ(text, "Error in Spectrum Data");
        return host.Messages.size();
    };
    EXPECT_EQ(messageCount(kTwoPoints, 0, true), 1u);         // no file
    EXPECT_EQ(messageCount("0.5,2.0\n1.5,4.0\n", 0), 1u);     // no marker
    EXPECT_EQ(messageCount("0.5,2.0\n1.5\n", 0), 1u);         // value missing
    EXPECT_EQ(messageCount("0.5,0\n1.5,4.0\n-1\n", 1), 1u);   // log of a zero value
    EXPECT_EQ(messageCount("-0.5,2\n1.5,4.0\n-1\n", 1), 1u);  // log of a negative period
    EXPECT_EQ(messageCount("0.5,0\n1.5,4.0\n-1\n", 0), 0u);   // linear takes the 0
    EXPECT_EQ(messageCount(hundred + "-1\n", 0), 0u);
    EXPECT_EQ(messageCount(hundred + "1.1,101\n-1\n", 0), 1u);

    // A mode that meets two equal periods exactly divides 0 by 0; the modes
    // before it keep their values, the others the zeros they had.
    host.Messages.clear();
    Build({6.284f / 1.25f, 6.284f, 3.0f}, "1.0,3\n1.0,4\n1.5,5\n-1\n");
    ReadSpectrumCurve(s);
    ASSERT_EQ(host.Messages.size(), 1u);
    EXPECT_EQ(s.Curve.CurvePoints, 3);
    EXPECT_NE(Spectrum(1), 0.0f);
    EXPECT_EQ(Spectrum(2), 0.0f);
    EXPECT_EQ(Spectrum(3), 0.0f);
}

TEST_F(SpectrumCurveRead, TheFirstOfTwoEqualHighestValuesIsThePeak) {
    // The ZPA period, point 1's 0.5 s, lies beyond the peak at 0.2 s and
    // before the one at 0.8 s: the missing mass warning follows the first.
    for (const bool earlyFirst : {true, false}) {
        host.Messages.clear();
        Build({6.284f}, earlyFirst ? "0.5,1\n0.2,3\n0.8,3\n1.0,1\n-1\n" : "0.5,1\n0.8,3\n0.2,3\n1.0,1\n-1\n");
        s.Options.MissMassOn = 1;
        ReadSpectrumCurve(s);
        const std::vector<std::string> warning = {"ZPA Period > Tmax Period - Check"};
        EXPECT_EQ(host.Messages, earlyFirst ? warning : std::vector<std::string>{});
    }
}

}  // namespace
}  // namespace tremodal
