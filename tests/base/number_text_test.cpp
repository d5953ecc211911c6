#include "base/number_text.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "support/test_support.h"

namespace tremodal {
namespace {

using testing::FailureOf;
using testing::MessageOf;

TEST(NumberText, PicturesOfTheReportTable) {
    // The singles nearest the table's decimals: 1234.5677490234375 and
    // 0.01230000000447034835815. A picture formats that exact value, so the
    // four-decimal pictures show 1234.5677 where the decimal 1234.5678 would
    // show itself.
    const f32 a = 1234.5678f;
    const f32 b = 0.0123f;
    EXPECT_EQ(FormatPicture(a, "0"), "1235");
    EXPECT_EQ(FormatPicture(b, "0"), "0");
    EXPECT_EQ(FormatPicture(0, "0"), "0");
    EXPECT_EQ(FormatPicture(a, "0.00"), "1234.57");
    EXPECT_EQ(FormatPicture(b, "0.00"), "0.01");
    EXPECT_EQ(FormatPicture(0, "0.00"), "0.00");
    for (const char* picture : {"#0.00", "##0.00"}) {
        EXPECT_EQ(FormatPicture(a, picture), "1234.57") << picture;
        EXPECT_EQ(FormatPicture(b, picture), "0.01") << picture;
        EXPECT_EQ(FormatPicture(0, picture), "0.00") << picture;
    }
    for (const char* picture : {"0.000", "##0.000"}) {
        EXPECT_EQ(FormatPicture(a, picture), "1234.568") << picture;
        EXPECT_EQ(FormatPicture(b, picture), "0.012") << picture;
        EXPECT_EQ(FormatPicture(0, picture), "0.000") << picture;
    }
    for (const char* picture : {"#0.0000", "###0.0000"}) {
        EXPECT_EQ(FormatPicture(a, picture), "1234.5677") << picture;
        EXPECT_EQ(FormatPicture(b, picture), "0.0123") << picture;
        EXPECT_EQ(FormatPicture(0, picture), "0.0000") << picture;
    }
    EXPECT_EQ(FormatPicture(a, "0.000E+00"), "1.235E+03");
    EXPECT_EQ(FormatPicture(b, "0.000E+00"), "1.230E-02");
    EXPECT_EQ(FormatPicture(0, "0.000E+00"), "0.000E+00");
    EXPECT_EQ(FormatPicture(a, "0.000E-00"), "1.235E03");
    EXPECT_EQ(FormatPicture(b, "0.000E-00"), "1.230E-02");
    EXPECT_EQ(FormatPicture(0, "0.000E-00"), "0.000E00");
}

TEST(NumberText, PicturesRoundTheExactValueOnceHalfAwayFromZero) {
    // Binary fractions that end exactly on a half round away from zero.
    EXPECT_EQ(FormatPicture(0.125f, "0.00"), "0.13");
    EXPECT_EQ(FormatPicture(-0.125f, "0.00"), "-0.13");
    EXPECT_EQ(FormatPicture(2.5f, "0"), "3");
    EXPECT_EQ(FormatPicture(-2.5f, "0"), "-3");
    EXPECT_EQ(FormatPicture(0.5f, "0"), "1");
    EXPECT_EQ(FormatPicture(1.0625f, "0.000E+00"), "1.063E+00");
    EXPECT_EQ(FormatPicture(0.125f, "0.0E+00"), "1.3E-01");
    EXPECT_EQ(FormatPicture(1234567.125f, "0.00"), "1234567.13");
    EXPECT_EQ(FormatPicture(6.103515625e-5f, "0.0000000000000"), "0.0000610351563");  // 2^-14
    EXPECT_EQ(FormatPicture(0.0009765625f, "0.000000000"), "0.000976563");            // 2^-10
    EXPECT_EQ(FormatPicture(0.0009765625f, "0.000000000000"), "0.000976562500");
    // 250.7290496826171875: nine digits would give 250.729050 and a second
    // rounding 250.7291.
    EXPECT_EQ(FormatPicture(250.72905f, "###0.0000"), "250.7290");
    // 1.016499996185302734375: nine digits 1.01650000, then 1.017.
    EXPECT_EQ(FormatPicture(1.0165f, "0.000E+00"), "1.016E+00");
    EXPECT_EQ(FormatPicture(-1.0165f, "0.000E-00"), "-1.016E00");
    // 1234.5677490234375 to seven decimals, every digit its own.
    EXPECT_EQ(FormatPicture(1234.5678f, "0.0000000"), "1234.5677490");
    // 0.0015 is held as 0.00150000001..., 0.0025 as 0.00249999994...
    EXPECT_EQ(FormatPicture(0.0015f, "0.000"), "0.002");
    EXPECT_EQ(FormatPicture(0.0025f, "0.000"), "0.002");
    EXPECT_EQ(FormatPicture(0.4f, "0"), "0");
    EXPECT_EQ(FormatPicture(0.0004f, "0.000"), "0.000");
    EXPECT_EQ(FormatPicture(0.0005f, "0.000"), "0.001");
}

TEST(NumberText, PicturesCarrySignAndShowEveryDigitOfLargeValues) {
    EXPECT_EQ(FormatPicture(9.9996f, "0.000E+00"), "1.000E+01");
    EXPECT_EQ(FormatPicture(9.996f, "0.00"), "10.00");
    EXPECT_EQ(FormatPicture(-0.0001f, "0.00"), "-0.00");
    EXPECT_EQ(FormatPicture(-0.0f, "0.00"), "0.00");
    EXPECT_EQ(FormatPicture(-0.1f, "0.000E-00"), "-1.000E-01");
    EXPECT_EQ(FormatPicture(5.0f, "##0.00"), "5.00");
    EXPECT_EQ(FormatPicture(16777216.0f, "0"), "16777216");
    // Digits beyond the picture on the left are those of the exact value,
    // no zeros made up behind the ninth.
    EXPECT_EQ(FormatPicture(17717442560.0f, "###0.0000"), "17717442560.0000");
    EXPECT_EQ(FormatPicture(1e20f, "0.00"), "100000002004087734272.00");
    EXPECT_EQ(FormatPicture(1234567936.0f, "0"), "1234567936");
    EXPECT_EQ(FormatPicture(999999999.9f, "0"), "1000000000");
    EXPECT_EQ(FormatPicture(3e38f, "0.000E+00"), "3.000E+38");
    EXPECT_EQ(FormatPicture(-1e-40f, "0.000E-00"), "-1.000E-40");  // a denormal, 9.99994610e-41
    EXPECT_EQ(FormatPicture(1e-5f, "0.000E-00"), "1.000E-05");
    EXPECT_EQ(FormatPicture(123456.7f, "0.000E-00"), "1.235E05");
    EXPECT_EQ(FormatPicture(1000.0f, "0.000E+00"), "1.000E+03");
    EXPECT_EQ(FormatPicture(999.94995f, "0.000E+00"), "9.999E+02");  // 999.949951171875
    EXPECT_EQ(FormatPicture(1e-30f, "0.000E+00"), "1.000E-30");
    EXPECT_EQ(FormatPicture(1e-30f, "0.0000"), "0.0000");
}

TEST(NumberText, ValReadsTheLongestNumericPrefix) {
    EXPECT_EQ(Val("  25"), 25);
    EXPECT_EQ(Val("\t-1.5e3xyz"), -1500);
    EXPECT_EQ(Val("+7"), 7);
    EXPECT_EQ(Val("2D2"), 200);
    EXPECT_EQ(Val("1.5E"), 1.5);  // an exponent without digits is left out
    EXPECT_EQ(Val(".5"), 0.5);
    EXPECT_EQ(Val("5."), 5);
    EXPECT_EQ(Val("1.2.3"), 1.2);
    EXPECT_EQ(Val("0.05"), 0.05);
    EXPECT_EQ(Val("abc"), 0);
    EXPECT_EQ(Val("."), 0);
    EXPECT_EQ(Val("-"), 0);
    EXPECT_EQ(Val(""), 0);
    EXPECT_EQ(Val("1e-400"), 0);
    EXPECT_EQ(Val("0e999999999999"), 0);
}

TEST(NumberText, StrictNumberRejectsTextThatIsNotANumberInFull) {
    EXPECT_EQ(StrictNumber(" 25 "), 25);
    EXPECT_EQ(StrictNumber("-1.5e3"), -1500);
    EXPECT_EQ(StrictNumber("+.5\t"), 0.5);
    for (const char* text : {"", "   ", "abc", "12x", "1e", ".", "-", "1 2", "1,5"}) {
        EXPECT_EQ(FailureOf([&] { StrictNumber(text); }), 13) << '"' << text << '"';
    }
    EXPECT_EQ(FailureOf([] { StrictNumber("1e999"); }), 6);
    EXPECT_EQ(MessageOf([] { StrictNumber("12x"); }), "type mismatch: \"12x\" is not a number");
}

}  // namespace
}  // namespace tremodal
