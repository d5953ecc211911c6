// Numbers as text: the forms that every file and report of the suite uses.
// Nothing else in the program turns a number into text or text into a number.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/failure.h"

namespace tremodal {

// General text: the shortest decimal that shows the value to 7 significant
// digits for a single and 15 for a double; exponent form ("1.234568E+07",
// "3.333333E-03", "1E+15") where plain decimal would need more digits.
// Integers print all their digits. Zero is "0".
std::string GeneralText(f32 x);
std::string GeneralText(f64 x);
std::string GeneralText(i16 x);
std::string GeneralText(i32 x);

// The value to `digits` significant digits as C's "%.<digits>g" gives it,
// always with a "." and never a locale's comma: "0.300000012" and
// "1.23456789e+10" for 9 digits, the precision that tells any two singles
// apart. For tables that other programs read, not for the suite's files.
std::string SignificantText(f64 x, int digits);

// The shortest decimal that reads back as the same single: 0.05f is "0.05",
// not "0.0500000007"; large and small values in exponent form ("1e-07").
std::string ShortestText(f32 x);

// Print item: a sign position (blank unless negative), the general text of
// the magnitude, one trailing blank: " 25 ", "-25 ", " 0.05 ".
std::string PrintItem(f32 x);
std::string PrintItem(f64 x);
std::string PrintItem(i16 x);
std::string PrintItem(i32 x);

// Signed text: a sign position, the number, nothing behind it, and no zero
// before the point below 1: " 25", "-25", " .05", "-.5".
std::string SignedText(f32 x);
std::string SignedText(f64 x);
std::string SignedText(i16 x);
std::string SignedText(i32 x);

// A single in a picture: "0", "0.00", "#0.00", "##0.00", "0.000", "##0.000",
// "#0.0000", "###0.0000", "0.000E+00" (exponent sign always) or "0.000E-00"
// (exponent sign only when negative). The exact binary value of the single
// is rounded once, half away from zero, at the picture's last digit, so the
// single nearest 1234.5678 (1234.5677490234375) shows as "1234.5677"; digits
// beyond the picture on the left are all those of that exact value; a
// negative value gets "-".
std::string FormatPicture(f32 value, std::string_view picture);

// The value in the picture, blanks in front up to the width, then the
// right-most `width` characters: 12345.678 in "0.000" at width 6 is "45.678".
std::string FormatField(f32 value, std::string_view picture, int width);

// Val: skips blanks, reads the longest numeric prefix (an exponent included)
// as a double; no prefix gives 0. Fails only with 6 for a number too large
// for a double.
f64 Val(std::string_view text);
// Whether Val finds a number in the text, rather than reading it as 0 for
// want of one.
bool HoldsNumber(std::string_view text);

// Strict conversion: like Val, but text that is not a number in full (blanks
// around it aside) fails with 13. Empty text fails too.
f64 StrictNumber(std::string_view text);

// A count for people to read, its digits in groups of three: "2,400",
// "-1,048,576". Messages only; no file of the suite holds this form.
std::string GroupedDigits(std::int64_t count);

// Blanks removed at both ends, at the left end only, at the right end only.
std::string Trim(std::string_view text);
std::string LTrim(std::string_view text);
std::string RTrim(std::string_view text);
// The text, filled up with blanks on the right (or left) to width; a longer
// text stands whole.
std::string PadRight(std::string_view text, std::size_t width);
std::string PadLeft(std::string_view text, std::size_t width);

}  // namespace tremodal
