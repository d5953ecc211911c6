#include "base/number_text.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace tremodal {
namespace {

// A picture formats the exact binary value of the single, rounded once at
// its last digit, half away from zero. The singles nearest the report
// table's decimals are 1234.5677490234375 and 0.01230000000447034835815, so
// the four-decimal pictures show 1234.5677 where the decimal 1234.5678
// would show itself.
TEST(NumberText, PicturesShowTheExactValueRoundedOnce) {
    // The report table's pictures and 1234.5678, 0.0123 and 0 in each.
    std::istringstream table(
        "0 1235 0 0  0.00 1234.57 0.01 0.00  #0.00 1234.57 0.01 0.00  ##0.00 1234.57 0.01 0.00 "
        "0.000 1234.568 0.012 0.000  ##0.000 1234.568 0.012 0.000  #0.0000 1234.5677 0.0123 0.0000 "
        "###0.0000 1234.5677 0.0123 0.0000  0.000E+00 1.235E+03 1.230E-02 0.000E+00 "
        "0.000E-00 1.235E03 1.230E-02 0.000E00");
    for (std::string picture, a, b, c; table >> picture >> a >> b >> c;)
        EXPECT_EQ(FormatPicture(1234.5678f, picture) + " " + FormatPicture(0.0123f, picture) + " " +
                      FormatPicture(0.0f, picture),
                  a + " " + b + " " + c);
    // Binary fractions that end exactly on a half round away from zero (2^-14,
    // 2^-10 among them). 250.7290496826171875: nine digits would give
    // 250.729050 and a second rounding 250.7291; 1.016499996185302734375:
    // 1.01650000, then 1.017. 1234.5677490234375 to seven decimals, every
    // digit its own. 0.0015 is held as 0.00150000001..., 0.0025 as
    // 0.00249999994... Then carries, signs, and every digit of large values:
    // those beyond the picture on the left are the exact value's, no zeros
    // made up behind the ninth. -1e-40 is a denormal, 9.99994610e-41;
    // 999.94995 is 999.949951171875.
    // Each case: the value (read as a single), the picture and the text.
    std::istringstream cases(
        "0.125 0.00 0.13  -0.125 0.00 -0.13  2.5 0 3  -2.5 0 -3  0.5 0 1  1.0625 0.000E+00 1.063E+00 "
        "0.125 0.0E+00 1.3E-01  1234567.125 0.00 1234567.13 "
        "6.103515625e-5 0.0000000000000 0.0000610351563  0.0009765625 0.000000000 0.000976563 "
        "0.0009765625 0.000000000000 0.000976562500  250.72905 ###0.0000 250.7290 "
        "1.0165 0.000E+00 1.016E+00  -1.0165 0.000E-00 -1.016E00  1234.5678 0.0000000 1234.5677490 "
        "0.0015 0.000 0.002  0.0025 0.000 0.002  0.4 0 0  0.0004 0.000 0.000  0.0005 0.000 0.001 "
        "9.9996 0.000E+00 1.000E+01  9.996 0.00 10.00  -0.0001 0.00 -0.00  -0.0 0.00 0.00 "
        "-0.1 0.000E-00 -1.000E-01  5.0 ##0.00 5.00  16777216.0 0 16777216 "
        "17717442560.0 ###0.0000 17717442560.0000  1e20 0.00 100000002004087734272.00 "
        "1234567936.0 0 1234567936  999999999.9 0 1000000000  3e38 0.000E+00 3.000E+38 "
        "-1e-40 0.000E-00 -1.000E-40  1e-5 0.000E-00 1.000E-05  123456.7 0.000E-00 1.235E05 "
        "1000.0 0.000E+00 1.000E+03  999.94995 0.000E+00 9.999E+02  1e-30 0.000E+00 1.000E-30 "
        "1e-30 0.0000 0.0000");
    for (std::string value, picture, text; cases >> value >> picture >> text;)
        EXPECT_EQ(FormatPicture(std::strtof(value.c_str(), nullptr), picture), text)
            << value << " " << picture;
}

TEST(NumberText, AFieldIsBlanksInFrontOrTheRightmostCharactersOfAWiderValue) {
    EXPECT_EQ(FormatField(12345.678f, "0.000", 10) + "|" + FormatField(12345.678f, "0.000", 9) + "|" +
                  FormatField(12345.678f, "0.000", 6) + "|" + FormatField(-1.5f, "0.000E-00", 6),
              " 12345.678|12345.678|45.678|500E00");
}

TEST(NumberText, ValReadsTheLongestNumericPrefix) {
    const std::pair<const char*, f64> cases[] = {{"  25", 25},   {"\t-1.5e3xyz", -1500},
                                                 {"+7", 7},      {"2D2", 200},
                                                 {"1.5E", 1.5},  // an exponent without digits is left out
                                                 {".5", 0.5},    {"5.", 5},
                                                 {"1.2.3", 1.2}, {"0.05", 0.05},
                                                 {"abc", 0},     {".", 0},
                                                 {"-", 0},       {"", 0},
                                                 {"1e-400", 0},  {"0e999999999999", 0}};
    for (const auto& [text, value] : cases) EXPECT_EQ(Val(text), value) << text;
    // HoldsNumber tells a 0 read for want of a number from a 0 given.
    EXPECT_EQ(
        std::vector<bool>({HoldsNumber("0"), HoldsNumber(" -.5x"), HoldsNumber("abc"), HoldsNumber(".")}),
        std::vector<bool>({true, true, false, false}));
}

// The tables' cells: the shortest decimal that gives the single back.
TEST(NumberText, ShortestTextReadsBackAsTheSameSingle) {
    EXPECT_EQ(ShortestText(0.05f) + " " + ShortestText(100.000008f) + " " + ShortestText(-2.25f) + " " +
                  ShortestText(1e-7f) + " " + ShortestText(16777216.0f) + " " + ShortestText(0.0f),
              "0.05 100.00001 -2.25 1e-07 16777216 0");
}

TEST(NumberText, StrictNumberRejectsTextThatIsNotANumberInFull) {
    EXPECT_EQ(std::vector<f64>({StrictNumber(" 25 "), StrictNumber("-1.5e3"), StrictNumber("+.5\t")}),
              std::vector<f64>({25, -1500, 0.5}));
    for (const char* text : {"", "   ", "abc", "12x", "1e", ".", "-", "1 2", "1,5"})
        EXPECT_EQ(testing::FailureOf([&] { StrictNumber(text); }), 13) << '"' << text << '"';
    EXPECT_EQ(testing::FailureOf([] { StrictNumber("1e999"); }), 6);
    EXPECT_EQ(testing::MessageOf([] { StrictNumber("12x"); }), "type mismatch: \"12x\" is not a number");
}

}  // namespace
}  // namespace tremodal
