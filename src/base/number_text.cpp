#include "base/number_text.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>

// Every conversion here goes through std::to_chars / std::from_chars, which
// never look at the locale: a file written on a machine with a decimal comma
// must read back everywhere, so the separator is always ".".

namespace tremodal {
namespace {

// Text for the values that checked arithmetic keeps out of files; they can
// only reach here from a value that was never stored through StoreF32.
std::string NonFiniteText(f64 x) {
    if (std::isnan(x)) return "NaN";
    return x < 0 ? "-Inf" : "Inf";
}

// General text of a double rounded to `precision` significant digits. The
// rounding is done once, on the exact binary value (a single widened to a
// double keeps its exact value), so 0.1f shows as "0.1" and not as the
// 0.100000001 it really holds.
std::string GeneralFloat(f64 x, int precision) {
    if (!std::isfinite(x)) return NonFiniteText(x);
    if (x == 0) return "0";

    char buf[48];
    const auto end =
        std::to_chars(buf, buf + sizeof buf, std::fabs(x), std::chars_format::scientific, precision - 1).ptr;
    // buf holds "d.ddddddde+XX": collect the digits, then the exponent.
    char digits[24];
    int count = 0;
    const char* p = buf;
    for (; p < end && *p != 'e'; ++p) {
        if (*p != '.') digits[count++] = *p;
    }
    ++p;  // 'e'
    const bool negativeExponent = *p == '-';
    ++p;  // exponent sign, always written by to_chars
    int exponent = 0;
    std::from_chars(p, end, exponent);
    if (negativeExponent) exponent = -exponent;
    while (count > 1 && digits[count - 1] == '0') --count;

    std::string out;
    out.reserve(24);
    if (x < 0) out += '-';
    if (exponent >= 0 && exponent <= precision - 1) {
        for (int i = 0; i <= exponent; ++i) out += i < count ? digits[i] : '0';
        if (count > exponent + 1) {
            out += '.';
            out.append(digits + exponent + 1, count - exponent - 1);
        }
    } else if (exponent < 0 && count - exponent - 1 <= precision) {
        out += "0.";
        out.append(-exponent - 1, '0');
        out.append(digits, count);
    } else {
        out += digits[0];
        if (count > 1) {
            out += '.';
            out.append(digits + 1, count - 1);
        }
        out += 'E';
        out += exponent < 0 ? '-' : '+';
        const int magnitude = std::abs(exponent);
        if (magnitude < 10) out += '0';
        out += std::to_string(magnitude);
    }
    return out;
}

std::string PrintItemOf(bool negative, std::string general) {
    if (!negative) general.insert(general.begin(), ' ');
    general += ' ';
    return general;
}

// A sign position, then the magnitude without the zero before the point.
std::string SignedFloat(f64 x, int precision) {
    std::string magnitude = GeneralFloat(std::fabs(x), precision);
    if (magnitude.starts_with("0.")) magnitude.erase(0, 1);
    magnitude.insert(magnitude.begin(), x < 0 ? '-' : ' ');
    return magnitude;
}

std::string SignedInteger(std::int64_t x) { return (x < 0 ? "-" : " ") + std::to_string(x < 0 ? -x : x); }

// ---------------------------------------------------------------------------
// Pictures

struct Picture {
    int intZeros = 0;      // '0' positions before the point: integer digits always shown
    int intPositions = 0;  // all digit positions before the point
    int fracDigits = 0;    // digit positions behind the point
    int fracZeros = 0;     // behind the point, the digits up to the last '0' are always shown
    bool hasPoint = false;
    bool exponent = false;
    bool exponentSignAlways = false;  // "E+" rather than "E-"
    int exponentDigits = 0;
};

Picture ParsePicture(std::string_view text) {
    Picture pic;
    std::size_t i = 0;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c == 'E' || c == 'e') break;
        if (c == '.') {
            pic.hasPoint = true;
        } else if (c == '0' || c == '#') {
            if (pic.hasPoint) {
                ++pic.fracDigits;
                if (c == '0') pic.fracZeros = pic.fracDigits;
            } else {
                ++pic.intPositions;
                if (c == '0') ++pic.intZeros;
            }
        }
    }
    if (i + 1 < text.size()) {
        pic.exponent = true;
        pic.exponentSignAlways = text[i + 1] == '+';
        for (std::size_t j = i + 2; j < text.size(); ++j) {
            if (text[j] == '0' || text[j] == '#') ++pic.exponentDigits;
        }
    }
    return pic;
}

// The exact decimal value of a positive finite single, in plain decimal with
// every digit it has. A single is m * 2^k with m odd, and such a value has
// exactly -k digits behind the point, so this is never longer than the 39
// integer digits of the largest single or the 149 decimals of the smallest.
std::string ExactDecimal(f32 a) {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(a);
    const int biased = int((bits >> 23) & 0xFF);
    std::uint32_t mantissa = bits & 0x7FFFFF;
    int power = (biased == 0 ? 1 : biased) - 150;
    if (biased != 0) mantissa |= 0x800000;
    power += std::countr_zero(mantissa);
    char buf[200];
    const char* end =
        std::to_chars(buf, buf + sizeof buf, f64(a), std::chars_format::fixed, power < 0 ? -power : 0).ptr;
    return std::string(static_cast<const char*>(buf), end);
}

// The digits of |a| * 10^p rounded once to an integer, half away from zero,
// from the exact binary value of the single: "0" when it rounds to nothing.
// No intermediate rounding to some number of significant digits may come
// first, or a value such as 250.72904968 in four decimals would round up
// twice and show 250.7291.
std::string RoundedDigits(f32 a, int p) {
    static constexpr f64 kPow10[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12};
    const f64 x = std::fabs(f64(a));
    if (p >= 0 && p <= 12) {
        // 10^p = 5^p * 2^p with 5^12 below 2^28: the 24-bit mantissa times
        // 5^p fits the 53 bits of a double, so the product is exact and
        // std::round rounds that exact value half away from zero.
        const f64 scaled = std::round(x * kPow10[p]);
        if (scaled < 9e18) {
            char buf[24];
            const char* end = std::to_chars(buf, buf + sizeof buf, std::uint64_t(scaled)).ptr;
            return std::string(static_cast<const char*>(buf), end);
        }
    }
    // Any other scale works on every digit of the exact value: the digit
    // behind the rounding place decides, and since the expansion is exact a
    // 5 there means at least one half.
    std::string digits = ExactDecimal(std::fabs(a));
    const std::size_t point = digits.find('.');
    const std::ptrdiff_t intLength =
        point == std::string::npos ? std::ptrdiff_t(digits.size()) : std::ptrdiff_t(point);
    if (point != std::string::npos) digits.erase(point, 1);
    const std::ptrdiff_t keep = intLength + p;  // digits before the rounding place
    if (keep < 0) return "0";
    const bool up = keep < std::ptrdiff_t(digits.size()) && digits[std::size_t(keep)] >= '5';
    if (keep <= std::ptrdiff_t(digits.size())) {
        digits.resize(std::size_t(keep));
    } else {
        digits.append(std::size_t(keep) - digits.size(), '0');
    }
    if (up) {
        std::ptrdiff_t i = keep - 1;
        for (; i >= 0 && digits[std::size_t(i)] == '9'; --i) digits[std::size_t(i)] = '0';
        if (i < 0) {
            digits.insert(digits.begin(), '1');
        } else {
            ++digits[std::size_t(i)];
        }
    }
    const std::size_t first = digits.find_first_not_of('0');
    return first == std::string::npos ? "0" : digits.substr(first);
}

// Appends the fraction digits, leaving out trailing zeros in '#' positions.
void AppendFraction(std::string& out, const Picture& pic, const char* frac) {
    int shown = pic.fracDigits;
    while (shown > pic.fracZeros && frac[shown - 1] == '0') --shown;
    if (pic.hasPoint) out += '.';
    out.append(frac, std::size_t(shown));
}

std::string FixedPicture(f32 value, const Picture& pic) {
    // The digits of |value| * 10^decimals rounded to an integer.
    std::string rounded = RoundedDigits(value, pic.fracDigits);
    const char* first = rounded.data();
    int length = int(rounded.size());

    // At least one digit before the fraction, so both parts can be cut out.
    const int needed = pic.fracDigits + 1;
    std::string padded;
    if (length < needed) {
        padded.assign(std::size_t(needed - length), '0');
        padded.append(first, std::size_t(length));
        first = padded.data();
        length = needed;
    }
    const int intLength = length - pic.fracDigits;
    int intStart = 0;
    while (intStart < intLength && first[intStart] == '0') ++intStart;
    const int intShown = intLength - intStart;

    std::string out;
    out.reserve(std::size_t(length + pic.intZeros + 2));
    if (value < 0) out += '-';
    if (intShown < pic.intZeros) out.append(std::size_t(pic.intZeros - intShown), '0');
    out.append(first + intStart, std::size_t(intShown));
    AppendFraction(out, pic, first + intLength);
    return out;
}

std::string ExponentPicture(f32 value, const Picture& pic) {
    const int intDigits = std::max(pic.intPositions, 1);
    const int significant = intDigits + pic.fracDigits;
    std::string mantissa(std::size_t(significant), '0');
    int exponent = 0;
    if (value != 0) {
        // The decimal exponent from the logarithm may be one off either way
        // near a power of ten; the digit count of the rounded mantissa tells
        // and the rounding is done again from the exact value, never from the
        // rounded digits. A carry to one digit more (9.9996 to 10.000) is
        // met in the same way.
        exponent = int(std::floor(std::log10(std::fabs(f64(value)))));
        std::string digits = RoundedDigits(value, significant - 1 - exponent);
        for (int tries = 0; tries < 4 && int(digits.size()) != significant; ++tries) {
            exponent += int(digits.size()) > significant ? 1 : -1;
            digits = RoundedDigits(value, significant - 1 - exponent);
        }
        mantissa = digits;
        exponent -= intDigits - 1;
    }

    std::string out;
    out.reserve(std::size_t(significant + 8));
    if (value < 0) out += '-';
    out.append(mantissa, 0, std::size_t(intDigits));
    AppendFraction(out, pic, mantissa.data() + intDigits);
    out += 'E';
    if (exponent < 0) {
        out += '-';
    } else if (pic.exponentSignAlways) {
        out += '+';
    }
    char buf[16];
    const auto end = std::to_chars(buf, buf + sizeof buf, std::abs(exponent)).ptr;
    const int length = int(end - buf);
    if (length < pic.exponentDigits) out.append(std::size_t(pic.exponentDigits - length), '0');
    out.append(buf, end);
    return out;
}

// ---------------------------------------------------------------------------
// Text to number

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsSpace(char c) { return c == ' ' || c == '\t'; }

struct ScannedNumber {
    bool found = false;
    std::size_t end = 0;  // one past the last character of the number
    f64 value = 0;
};

// Reads the longest number at `start`: a sign, digits with at most one point
// (at least one digit), then an exponent (E, e, D or d, a sign, digits). An
// exponent letter not followed by digits is not part of the number.
ScannedNumber ScanNumber(std::string_view text, std::size_t start) {
    ScannedNumber result;
    std::size_t i = start;
    std::string normal;  // the number as std::from_chars wants it
    if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
        if (text[i] == '-') normal += '-';
        ++i;
    }
    int mantissaDigits = 0;
    // The decimal order of the first nonzero digit (1 for 1..9), read ahead of
    // the conversion to tell an overflow from an underflow.
    long order = 0;
    bool nonzeroSeen = false;
    bool afterPoint = false;
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (IsDigit(c)) {
            ++mantissaDigits;
            if (c != '0') nonzeroSeen = true;
            if (!afterPoint && nonzeroSeen) ++order;
            if (afterPoint && !nonzeroSeen) --order;
        } else if (c == '.' && !afterPoint) {
            afterPoint = true;
        } else {
            break;
        }
        normal += c;
    }
    if (mantissaDigits == 0) return result;
    result.found = true;
    result.end = i;

    long exponent = 0;
    if (i < text.size() && (text[i] == 'E' || text[i] == 'e' || text[i] == 'D' || text[i] == 'd')) {
        std::size_t j = i + 1;
        bool negative = false;
        if (j < text.size() && (text[j] == '+' || text[j] == '-')) negative = text[j++] == '-';
        const std::size_t digitsStart = j;
        while (j < text.size() && IsDigit(text[j])) {
            if (exponent < 100000000) exponent = exponent * 10 + (text[j] - '0');
            ++j;
        }
        if (j > digitsStart) {
            if (negative) exponent = -exponent;
            normal += 'e';
            normal += std::to_string(exponent);
            result.end = j;
        } else {
            exponent = 0;
        }
    }

    const auto converted = std::from_chars(normal.data(), normal.data() + normal.size(), result.value,
                                           std::chars_format::general);
    if (converted.ec == std::errc::result_out_of_range) {
        if (nonzeroSeen && order + exponent > 0) {
            Fail(kOverflow, "overflow: " + std::string(text.substr(start, result.end - start)) +
                                " is too large for a number");
        }
        result.value = 0;  // too small for a double: it reads as zero
    }
    return result;
}

std::size_t SkipSpace(std::string_view text, std::size_t i) {
    while (i < text.size() && IsSpace(text[i])) ++i;
    return i;
}

}  // namespace

std::string GeneralText(f32 x) { return GeneralFloat(x, 7); }
std::string GeneralText(f64 x) { return GeneralFloat(x, 15); }
std::string GeneralText(i16 x) { return std::to_string(x); }
std::string GeneralText(i32 x) { return std::to_string(x); }

std::string SignificantText(f64 x, int digits) {
    if (!std::isfinite(x)) return NonFiniteText(x);
    // The general format of to_chars with a precision is that of %g.
    char buf[64];
    const auto end = std::to_chars(buf, buf + sizeof buf, x, std::chars_format::general, digits).ptr;
    return std::string(buf, end);
}

std::string PrintItem(f32 x) { return PrintItemOf(x < 0, GeneralText(x)); }
std::string PrintItem(f64 x) { return PrintItemOf(x < 0, GeneralText(x)); }
std::string PrintItem(i16 x) { return PrintItemOf(x < 0, GeneralText(x)); }
std::string PrintItem(i32 x) { return PrintItemOf(x < 0, GeneralText(x)); }

std::string SignedText(f32 x) { return SignedFloat(x, 7); }
std::string SignedText(f64 x) { return SignedFloat(x, 15); }
std::string SignedText(i16 x) { return SignedInteger(x); }
std::string SignedText(i32 x) { return SignedInteger(x); }

std::string FormatPicture(f32 value, std::string_view picture) {
    if (!std::isfinite(value)) return NonFiniteText(value);
    const Picture pic = ParsePicture(picture);
    return pic.exponent ? ExponentPicture(value, pic) : FixedPicture(value, pic);
}

std::string FormatField(f32 value, std::string_view picture, int width) {
    if (width <= 0) return {};
    const std::string text = FormatPicture(value, picture);
    const std::size_t w = std::size_t(width);
    if (text.size() >= w) return text.substr(text.size() - w);
    std::string out(w - text.size(), ' ');
    out += text;
    return out;
}

std::string ShortestText(f32 x) {
    char text[32];
    const std::to_chars_result end = std::to_chars(text, text + sizeof text, x);
    return std::string(text, end.ptr);
}

f64 Val(std::string_view text) { return ScanNumber(text, SkipSpace(text, 0)).value; }

bool HoldsNumber(std::string_view text) { return ScanNumber(text, SkipSpace(text, 0)).found; }

f64 StrictNumber(std::string_view text) {
    const ScannedNumber number = ScanNumber(text, SkipSpace(text, 0));
    if (!number.found || SkipSpace(text, number.end) != text.size()) {
        Fail(kTypeMismatch, "type mismatch: \"" + std::string(text) + "\" is not a number");
    }
    return number.value;
}

std::string GroupedDigits(std::int64_t count) {
    const std::string digits = std::to_string(count);
    const std::size_t first = count < 0 ? 1 : 0;
    std::string grouped = digits.substr(0, first);
    for (std::size_t i = first; i < digits.size(); ++i) {
        if (i > first && (digits.size() - i) % 3 == 0) grouped += ',';
        grouped += digits[i];
    }
    return grouped;
}

std::string Trim(std::string_view text) { return RTrim(LTrim(text)); }

std::string LTrim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string_view::npos ? std::string() : std::string(text.substr(first));
}

std::string RTrim(std::string_view text) {
    const std::size_t last = text.find_last_not_of(' ');
    return last == std::string_view::npos ? std::string() : std::string(text.substr(0, last + 1));
}

std::string PadRight(std::string_view text, std::size_t width) {
    std::string padded(text);
    if (padded.size() < width) padded.append(width - padded.size(), ' ');
    return padded;
}

std::string PadLeft(std::string_view text, std::size_t width) {
    std::string padded(text);
    if (padded.size() < width) padded.insert(0, width - padded.size(), ' ');
    return padded;
}

}  // namespace tremodal
