// The controls of the dialog against ResponseOptions, and the key filters,
// without any window.
#include "dialog/form2.h"

#include <gtest/gtest.h>

#include "input/options_file.h"
#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::MessageOf;
using testing::TempDir;
using testing::WriteFile;

struct FreshForm {
    RunState state;
    Form2 form;
    FreshForm() {
        state.Model.ModelPath = "/jobs/FRAME";
        Form_Load(state, form);
    }
};

TEST(Form2, SetDefRoundsModesDownTrimsCasesAndSurvivesAZeroVelocity) {
    FreshForm f;
    f.form.txtCase = {"  2", " 20 ", " 7", "2.7", "-2.5"};
    f.form.txtFact[2] = "0";
    f.form.optComb = -1;
    f.state.Options.CombMethod = 4;
    f.form.optInterp = 1;
    SetDef(f.state, f.form);
    const ResponseOptions& o = f.state.Options;
    EXPECT_EQ(o.FreqCase, "2");
    EXPECT_EQ(o.ResultsCase, "20 ");
    EXPECT_EQ(o.MissMassStartCase, "7");
    EXPECT_EQ(o.SingleMode, 2);
    EXPECT_EQ(o.ForceSignMode, -3);
    for (int d = 4; d <= 6; ++d) EXPECT_EQ(o.DirFactor(d), 0.0f) << "direction " << d;
    EXPECT_EQ(o.CombMethod, 4);  // no button selected: the method stays
    EXPECT_EQ(o.InterpMethod, 1);
}

TEST(Form2, AFieldThatIsNoNumberIsNamedAndNothingIsTaken) {
    FreshForm f;
    SetDef(f.state, f.form);
    f.form.txtFact[1] = "0.9";
    f.form.txtDampR = "abc";
    EXPECT_EQ(MessageOf([&] { SetDef(f.state, f.form); }), "Damping Ratio: \"abc\" is not a number");
    EXPECT_EQ(f.state.Options.DirFactor(2), 0.5f);

    f.form.txtDampR = "0.05";
    for (const char* text : {"", "-", "1/2"}) {
        f.form.txtDir = text;
        EXPECT_EQ(MessageOf([&] { SetDef(f.state, f.form); }),
                  "Principal Direction Angle: \"" + std::string(text) + "\" is not a number");
    }
    f.form.txtDir = "0";
    f.form.txtCase[3] = "32768";
    EXPECT_EQ(MessageOf([&] { SetDef(f.state, f.form); }), "Use only one mode: \"32768\" is out of range");
}

TEST(Form2, SetOptShowsTheOptionsButLeavesShearAccelAndAVanishedCurve) {
    TempDir dir;
    FreshForm f;
    ResponseOptions& o = f.state.Options;
    SetFreshOptions(o);
    o.DampingRatio = 0.02f;
    o.CombMethod = 7;
    o.MissMassOn = 1;
    o.SpectrumFile = dir.File("gone.URS");
    f.form.optComb = 3;
    f.form.chkShear = 1;
    f.form.chkAccel = 1;
    f.form.Label5 = "Respons File:old.URS";
    SetOpt(f.state, f.form);
    EXPECT_EQ(f.form.txtDampR, "0.02");
    EXPECT_EQ(f.form.optComb, 3);  // method 7 names no button
    EXPECT_EQ(f.form.chkMissMass, 1);
    EXPECT_EQ(f.form.chkShear, 1);
    EXPECT_EQ(f.form.chkAccel, 1);
    EXPECT_EQ(f.form.Label5, "Respons File:old.URS");

    WriteFile(o.SpectrumFile, "0,1\r\n");
    o.SpectrumType = 5;
    o.ZpaHighestMode = 0;
    f.form.optSpect = 1;
    EXPECT_EQ(MessageOf([&] { SetOpt(f.state, f.form); }),
              "Spectrum type 5 of the options names no curve kind");
    EXPECT_EQ(f.form.optSpect, 1);
    EXPECT_EQ(f.form.Label5, "Respons File:" + o.SpectrumFile);
    EXPECT_EQ(f.form.chkZPA, 0);  // the controls behind the curve kind are set all the same
}

// What each filter makes of a typed character: the code that reaches the
// field, 0 when it is dropped.
i16 Typed(void (*filter)(i16&), char c) {
    i16 key = static_cast<unsigned char>(c);
    filter(key);
    return key;
}

TEST(Form2, KeyFiltersPassNumbersAndCapitalEOnly) {
    auto factor = [](i16& k) { txtFact_KeyPress(1, k); };
    auto ground = [](i16& k) { txtGround_KeyPress(0, k); };
    auto caseField = [](i16& k) { txtCase_KeyPress(3, k); };
    void (*raising[])(i16&) = {factor, ground, txtCurve_KeyPress};
    void (*plain[])(i16&) = {caseField, txtDir_KeyPress};
    for (auto filter : raising) {
        EXPECT_EQ(Typed(filter, 'e'), 'E');
        EXPECT_EQ(Typed(filter, 'E'), 'E');
    }
    for (auto filter : plain) {
        EXPECT_EQ(Typed(filter, 'e'), 0);
        EXPECT_EQ(Typed(filter, 'E'), 'E');
    }
    for (auto filter : {raising[0], raising[1], raising[2], plain[0], plain[1]}) {
        for (char c : std::string("0123456789-+./, \b")) EXPECT_EQ(Typed(filter, c), c);
        for (char c : std::string("a:;=?Dxz~")) EXPECT_EQ(Typed(filter, c), 0) << c;
        EXPECT_EQ(Typed(filter, '\xe9'), 0);  // a letter beyond ASCII
    }
}

}  // namespace
}  // namespace tremodal
