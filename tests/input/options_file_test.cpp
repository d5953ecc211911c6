#include "input/options_file.h"

#include <gtest/gtest.h>

#include "support/model_fixture.h"

namespace tremodal {
namespace {

using testing::kFreshOptionsFile;
using testing::ReadFile;
using testing::TempDir;
using testing::WriteFile;

struct OptionsFixture {
    TempDir dir;
    RunState state;
    OptionsFixture() {
        state.Model.ModelPath = dir.File("FRAME");
        state.Options.OptionsFile = dir.File("FRAME.USM3");
    }
};

TEST(OptionsFile, FreshDialogValuesWriteTheExampleFileByteForByte) {
    OptionsFixture f;
    SetFreshOptions(f.state.Options);
    f.state.Options.FreqCase = "1";
    f.state.Options.ResultsCase = "20";
    f.state.Options.SpectrumFile = f.state.Model.ModelPath + ".URS1";
    WriteOptionsFile(f.state);
    EXPECT_EQ(ReadFile(f.state.Options.OptionsFile), kFreshOptionsFile);
}

TEST(OptionsFile, ExampleFileReadsBackToTheSameValues) {
    OptionsFixture f;
    WriteFile(f.state.Options.OptionsFile, kFreshOptionsFile);
    ReadOptions(f.state);
    ResponseOptions fresh;
    SetFreshOptions(fresh);
    const ResponseOptions& o = f.state.Options;
    EXPECT_EQ(o.FreqCase, "1");
    EXPECT_EQ(o.ResultsCase, "20");
    EXPECT_EQ(o.SingleMode, 0);
    EXPECT_EQ(o.SpectrumFile, f.state.Model.ModelPath + ".URS1");
    EXPECT_EQ(o.SpectrumType, 2);
    EXPECT_EQ(o.CurveFactor, 9.81f);
    EXPECT_EQ(o.PrincipalAngle, 0.0);
    EXPECT_EQ(o.InterpMethod, 0);
    // The factors come back as the singles nearest their 7-digit texts: the
    // derived rotation factors are not recomputed.
    const f32 factors[] = {0, 1, 0.5f, 0.7f, 0.0014875f, 0.0025f, 0.002125f};
    for (int d = 1; d <= 6; ++d) {
        EXPECT_EQ(o.DirFactor(d), factors[d]) << "direction " << d;
        EXPECT_EQ(o.DirOn(d), fresh.DirOn(d)) << "direction " << d;
    }
    EXPECT_NE(fresh.DirFactor(4), 0.0014875f);
    EXPECT_EQ(o.ShearWaveVelocity, 400.0f);
    EXPECT_EQ(o.GroundX, 0.0f);
    EXPECT_EQ(o.CombMethod, 1);
    EXPECT_EQ(o.CombName, "QCQ");  // the reader's word for method 1, not the button's "CQC"
    EXPECT_EQ(o.Duration, 10.0f);
    EXPECT_EQ(o.DampingRatio, 0.05f);
    EXPECT_EQ(o.ForceSignMode, 0);
    EXPECT_EQ(o.MissMassOn, 0);
    EXPECT_EQ(o.MissMassStartCase, "0");
    EXPECT_EQ(o.ZpaHighestMode, 1);
}

TEST(OptionsFile, FileEndingEarlyKeepsLaterItemsSilently) {
    OptionsFixture f;
    std::string firstEightLines(kFreshOptionsFile);
    firstEightLines.resize(firstEightLines.find("Spectrum Direction Definition"));
    WriteFile(f.state.Options.OptionsFile, firstEightLines);
    ResponseOptions& o = f.state.Options;
    o.DirFactor(1) = 7;
    o.DirOn(1) = 0;
    o.CombMethod = 3;
    o.Duration = 42;
    o.MissMassStartCase = "kept";
    o.ZpaHighestMode = 5;
    ReadOptions(f.state);
    EXPECT_EQ(o.FreqCase, "1");
    EXPECT_EQ(o.InterpMethod, 0);
    EXPECT_EQ(o.DirFactor(1), 7.0f);
    EXPECT_EQ(o.DirOn(1), 0);
    EXPECT_EQ(o.Duration, 42.0f);
    EXPECT_EQ(o.MissMassStartCase, "kept");
    EXPECT_EQ(o.ZpaHighestMode, 5);
    // The steps behind the reading still run, on what stands in memory.
    EXPECT_EQ(o.CombName, "DSM");
    EXPECT_EQ(o.SpectrumFile, f.state.Model.ModelPath + ".URS1");
}

TEST(OptionsFile, BadValuesStopTheReadingWhereTheyStand) {
    OptionsFixture f;
    ResponseOptions& o = f.state.Options;
    o.SpectrumType = 9;
    o.CombMethod = 9;
    o.CombName = "before";
    std::string text(kFreshOptionsFile);
    text.replace(text.find(", 0 \r\n"), 6, ", 99999 \r\n");  // SingleMode does not fit 16 bits
    WriteFile(o.OptionsFile, text);
    ReadOptions(f.state);
    EXPECT_EQ(o.ResultsCase, "20");
    EXPECT_EQ(o.SingleMode, 0);
    EXPECT_EQ(o.SpectrumType, 9);
    EXPECT_EQ(o.CombName, "before");

    // A method outside 0 to 4 reads without complaint; the name stays.
    text = kFreshOptionsFile;
    text.replace(text.find("Method               , 1 "), 25, "Method               , 7 ");
    WriteFile(o.OptionsFile, text);
    ReadOptions(f.state);
    EXPECT_EQ(o.CombMethod, 7);
    EXPECT_EQ(o.CombName, "before");
    EXPECT_EQ(o.ZpaHighestMode, 1);

    // Garbage and an empty file leave everything as it was.
    o.FreqCase = "untouched";
    WriteFile(o.OptionsFile, "");
    ReadOptions(f.state);
    EXPECT_EQ(o.FreqCase, "untouched");
    WriteFile(o.OptionsFile, std::string("\0\xff\x01garbage,,,\r\r\n\n", 17));
    ReadOptions(f.state);
    EXPECT_EQ(o.CombMethod, 7);
}

TEST(OptionsFile, SpectrumFileNameFoldsBesideTheModelAndCompletesOnRead) {
    OptionsFixture f;
    RunState& s = f.state;
    const std::string model = s.Model.ModelPath;

    s.Options.SpectrumFile = model + ".URS1";
    EXPECT_EQ(FoldSpectrumFileName(s), "MODEL.URS1");
    s.Options.SpectrumFile = model + ". URS2 ";
    EXPECT_EQ(FoldSpectrumFileName(s), "MODEL.URS2");
    s.Options.SpectrumFile = model + ".A.B";  // the stem runs to the last point
    EXPECT_EQ(FoldSpectrumFileName(s), model + ".A.B");
    s.Options.SpectrumFile = "/elsewhere/FRAME.URS1";
    EXPECT_EQ(FoldSpectrumFileName(s), "/elsewhere/FRAME.URS1");
    s.Options.SpectrumFile = "";
    EXPECT_EQ(FoldSpectrumFileName(s), "");

    const auto readBack = [&](const std::string& stored) {
        std::string text(kFreshOptionsFile);
        text.replace(text.find("MODEL.URS1"), 10, stored);
        WriteFile(s.Options.OptionsFile, text);
        ReadOptions(s);
        return s.Options.SpectrumFile;
    };
    EXPECT_EQ(readBack("model.urs1"), model + ".urs1");
    EXPECT_EQ(readBack("MODEL.A.B"), model + ".B");
    EXPECT_EQ(readBack("MODEL.  URS3  "), model + ".URS3");
    EXPECT_EQ(readBack("/elsewhere/MODEL.URS1"), "/elsewhere/MODEL.URS1");
    EXPECT_EQ(readBack("curve.txt"), "curve.txt");
    EXPECT_EQ(readBack(""), "");
}

}  // namespace
}  // namespace tremodal
