#include "runcontrol/analysis_driver.h"

#include <gtest/gtest.h>

#include "input/options_file.h"
#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::Exists;
using testing::FailureOf;
using testing::FakeHost;
using testing::ModelFixture;
using testing::ReadFile;
using testing::WriteFile;

struct DriverFixture {
    ModelFixture model;
    FakeHost host;
    RunState s;
    DriverFixture() {
        s.Ui = &host;
        s.Model.FilesDir = model.dir.Path();
        s.Model.ModelPath = model.modelPath;
        s.Model.NumNodes = 4;
        for (Array1<f32>* axis : {&s.Model.NodeX, &s.Model.NodeY, &s.Model.NodeZ}) axis->Allocate(4);
        SetFreshOptions(s.Options);
        s.Options.FreqCase = "1";
        s.Options.ResultsCase = "20";
        s.Options.SpectrumFile = model.File(".URS1");
        s.Options.OptionsFile = model.File(".USM3");
        model.WriteFrequencyCase();
    }
    std::string ResponseCount() const { return ReadFile(model.dir.File("response.cnt")); }
};

TEST(AnalysisDriver, MissingMassBlockShowsTheThreeTranslations) {
    DriverFixture f;
    f.s.Curve.ZpaPeriod = 0.03f;
    f.s.Curve.ZpaValue = 3.5f;
    f.s.Options.MissMassStartCase = "10";
    f.s.MissMassLoad(1) = 1234.5f;  // a tie in the last digit rounds away from zero
    f.s.MissMassLoad(3) = -0.1f;
    AddMissingMassBlock(f.s);
    const std::vector<std::string> expected = {
        " ",
        "Missing Mass Loads  ZPA         Period =  0.030 Sec  33.33 Hz",
        "                      Fxe         Fye         Fze ",
        "   ZPA   m/s2        3.500E00    1.750E00    2.450E00",
        "   St Load Case          10          11          12",
        "   Total Loads      1.235E03    0.000E00  -1.000E-01",
    };
    EXPECT_EQ(f.s.List1, expected);

    // An empty start case counts as 0.
    f.s.List1.clear();
    f.s.Options.MissMassStartCase = "";
    AddMissingMassBlock(f.s);
    EXPECT_EQ(f.s.List1[4], "   St Load Case           0           1           2");

    // A ZPA period of 0 is a division by zero, not an infinite frequency.
    f.s.Curve.ZpaPeriod = 0;
    EXPECT_EQ(FailureOf([&] { AddMissingMassBlock(f.s); }), 11);
}

TEST(AnalysisDriver, BaseShearBlockFollowsModeMethodAndRotations) {
    DriverFixture f;
    f.s.BaseShear(1) = 4;
    f.s.BaseShear(2) = 0;
    f.s.BaseShear(3) = 2.25e6f;
    f.s.Options.CombName = "DSM           Duration Secs";
    AddBaseShearBlock(f.s);
    std::vector<std::string> expected = {
        " ",
        "Base Shear Components due to Translational Motion  Comb-DSM           Duration Secs",
        "              Fxe         Fye          Fze ",
        "Total      2.000E00    0.000E00    1.500E03",
    };
    EXPECT_EQ(f.s.List1, expected);

    // One mode, a rotation on, and the absolute sum taken as it stands.
    f.s.List1.clear();
    f.s.Options.SingleMode = 3;
    f.s.Options.DirOn(5) = 1;
    f.s.Options.CombMethod = 4;
    f.s.BaseShear(1) = -4;
    AddBaseShearBlock(f.s);
    expected = {
        " ",
        "Only Mode 3 ACTIVE",
        "Base Shear Loads due to Translational Motion",
        "Effect of ground rotation is not included",
        "              Fxe         Fye          Fze ",
        "Total     -4.000E00    0.000E00    2.250E06",
    };
    EXPECT_EQ(f.s.List1, expected);
}

TEST(AnalysisDriver, LoadCaseTitleNamesOptionsCaseAngleAndMethodOrMode) {
    DriverFixture f;
    f.s.Options.OptionsNumber = " 2 ";
    f.s.Options.PrincipalAngle = 30;
    f.s.Options.SingleMode = 3;
    SetLoadCaseTitle(f.s);
    EXPECT_EQ(f.s.Model.LoadCaseTitle, "SpectResp 2:FrqCase 1:Dir'n 30 Deg: Mode 3");

    f.s.Options.SingleMode = 0;
    f.s.Options.PrincipalAngle = 1.0 / 3;
    f.s.Options.CombName = " QCQ ";
    SetLoadCaseTitle(f.s);
    EXPECT_EQ(f.s.Model.LoadCaseTitle, "SpectResp 2:FrqCase 1:Dir'n 0.333333333333333 Deg: QCQ");
}

TEST(AnalysisDriver, ResponseCountRaisesAShortDurationToOneTenth) {
    DriverFixture f;
    f.s.Options.Duration = 0;
    f.s.Options.CombMethod = 0;
    f.s.Options.DirOn(3) = 1;
    f.s.Options.ForceSignMode = -2;
    f.s.Options.DampingRatio = 0.02f;
    WriteResponseCount(f.s);
    EXPECT_EQ(f.ResponseCount(),
              f.model.modelPath + "\r\n20\r\n 1  0  1  0  0  0 \r\n-2 \r\n0\r\n 0 \r\n 0.02 \r\n 0.1 \r\n");
    EXPECT_EQ(f.s.Options.Duration, 0.1f);  // stays raised

    for (f32 kept : {0.1f, 0.25f}) {
        f.s.Options.Duration = kept;
        WriteResponseCount(f.s);
        EXPECT_EQ(f.s.Options.Duration, kept);
    }
    f.s.Options.Duration = 0.099999994f;
    WriteResponseCount(f.s);
    EXPECT_EQ(f.s.Options.Duration, 0.1f);
}

TEST(AnalysisDriver, RunPhaseDecidesWhetherTheResultsAreWritten) {
    for (i16 phase : {0, 2, 3, -1}) {
        DriverFixture f;
        f.s.RunPhase = phase;
        AnalyzeResponse(f.s);
        EXPECT_TRUE(Exists(f.model.dir.File("response.cnt"))) << "phase " << phase;
        EXPECT_EQ(f.s.Model.LoadCaseTitle, "SpectResp :FrqCase 1:Dir'n 0 Deg: CQC");
    }
    DriverFixture first;
    first.s.RunPhase = 1;
    first.s.Options.ShowModalShear = 1;
    AnalyzeResponse(first.s);
    EXPECT_FALSE(Exists(first.model.dir.File("response.cnt")));
    EXPECT_EQ(first.s.Model.LoadCaseTitle, "");
    // Mode 1 sways in x with participation 1.5 at 10 rad/s on a flat curve
    // of 1 g: 1.5^2 x 9.81.
    EXPECT_EQ(first.s.List1.back(), "Total      2.207E01    0.000E00    0.000E00");
}

TEST(AnalysisDriver, SingleModeGuardStopsBeforeAnyOutput) {
    DriverFixture f;
    f.s.Options.SingleMode = 3;  // the case has two modes
    f.s.Options.ShowModalShear = 1;
    f.s.BaseShear(2) = 5;
    AnalyzeResponse(f.s);
    ASSERT_EQ(f.host.Messages.size(), 1u);
    EXPECT_EQ(f.host.Messages[0], "Only 2 modes exist");
    EXPECT_EQ(f.host.MessageTitles[0], "TREMODAL");
    EXPECT_TRUE(f.s.List1.empty());
    EXPECT_FALSE(Exists(f.model.dir.File("response.cnt")));
    EXPECT_EQ(f.s.BaseShear(2), 0.0f);  // the accumulators are cleared before the guard

    DriverFixture negative;
    negative.s.Options.SingleMode = -1;  // passes the guard, but names no mode
    EXPECT_EQ(FailureOf([&] { AnalyzeResponse(negative.s); }), 9);
    EXPECT_TRUE(negative.host.Messages.empty());
    EXPECT_FALSE(Exists(negative.model.dir.File("response.cnt")));
}

TEST(AnalysisDriver, MissingFrequencyCaseIsFileNotFound) {
    DriverFixture f;
    f.s.Options.FreqCase = " 2";
    EXPECT_EQ(FailureOf([&] { AnalyzeResponse(f.s); }), 53);
    EXPECT_FALSE(Exists(f.model.File(".H2")));
}

}  // namespace
}  // namespace tremodal
