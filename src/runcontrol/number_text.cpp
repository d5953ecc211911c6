#include "runcontrol/number_text.h"

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

// A single as a picture sees it: its first nine significant digits, the
// precision that tells any two singles apart, rounded half away from zero.
// The picture then rounds this decimal, not the binary value behind it, so a
// single entered as 1234.5678 (held as 1234.56774902...) reads as 1234.56775
// and shows as "1234.5678" in four decimals, not as "1234.5677".
struct Decimal9 {
    char digits[9];  // '1'..'9' first, then '0'..'9'
    int exponent;    // decimal exponent of the first digit
};

// Adds one to the decimal digits in [first, last), carrying to the left.
// Returns true when the carry runs out of the left end (all nines).
bool IncrementDigits(char* first, char* last) {
    while (last != first) {
        --last;
        if (*last != '9') {
            ++*last;
            return false;
        }
        *last = '0';
    }
    return true;
}

// The exact decimal value of a positive finite single, in plain decimal with
// every digit it has. A single is m * 2^k with m odd, and such a value has
// exactly -k digits behind the point, so this is never longer than the 39
// integer digits of the largest single or the 149 decimals of the smallest.
// Written into `buf`; returns the end.
char* ExactDecimal(f32 a, char* buf, char* bufEnd) {
    const std::uint32_t bits = std::bit_cast<std::uint32_t>(a);
    const int biased = int((bits >> 23) & 0xFF);
    std::uint32_t mantissa = bits & 0x7FFFFF;
    int power = (biased == 0 ? 1 : biased) - 150;
    if (biased != 0) mantissa |= 0x800000;
    power += std::countr_zero(mantissa);
    return std::to_chars(buf, bufEnd, f64(a), std::chars_format::fixed, power < 0 ? -power : 0).ptr;
}

// Nine digits from the full decimal expansion: a tenth digit of 5 or more
// rounds up, which is half away from zero on an exact value.
Decimal9 ExactDecimal9(f32 a) {
    char buf[256];
    const char* end = ExactDecimal(a, buf, buf + sizeof buf);
    const char* point = std::find(static_cast<const char*>(buf), end, '.');
    Decimal9 d;
    std::fill(d.digits, d.digits + 9, '0');
    int count = 0;
    char next = '0';
    for (const char* p = buf; p < end; ++p) {
        if (*p == '.' || (count == 0 && *p == '0')) continue;
        if (count == 0) d.exponent = p < point ? int(point - p) - 1 : -int(p - point);
        if (count == 9) {
            next = *p;
            break;
        }
        d.digits[count++] = *p;
    }
    if (next >= '5' && IncrementDigits(d.digits, d.digits + 9)) {
        d.digits[0] = '1';
        ++d.exponent;
    }
    return d;
}

Decimal9 ToDecimal9(f32 a) {
    static constexpr f64 kPow10[] = {1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12};
    // From 1e-4 up to 1e9 the single scaled to nine integer digits needs at
    // most 10^12 = 5^12 * 2^12, and 24 + 28 bits fit a double: the product is
    // exact and std::round rounds it half away from zero. Outside that range
    // the full decimal expansion is rounded instead.
    const f64 x = a;
    int exponent = 0;
    if (x >= 1) {
        while (exponent < 9 && x >= kPow10[exponent + 1]) ++exponent;
        if (exponent == 9) return ExactDecimal9(a);
    } else {
        while (exponent > -5 && x * kPow10[-exponent] < 1) --exponent;
        if (exponent == -5) return ExactDecimal9(a);
    }
    f64 scaled = std::round(x * kPow10[8 - exponent]);
    if (scaled == 1e9) {
        scaled = 1e8;
        ++exponent;
    }
    Decimal9 d;
    d.exponent = exponent;
    std::to_chars(d.digits, d.digits + 9, std::uint32_t(scaled));
    return d;
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
    char digits[64];
    int length = 0;
    std::string wide;  // a very large value or very many decimals
    char* first = digits;
    if (value != 0) {
        const Decimal9 d = ToDecimal9(std::fabs(value));
        const int kept = d.exponent + pic.fracDigits + 1;  // digits before the rounding place
        if (kept <= 0) {
            digits[length++] = kept == 0 && d.digits[0] >= '5' ? '1' : '0';
        } else if (kept >= 9) {
            if (kept + 1 > int(sizeof digits)) {
                wide.assign(std::size_t(kept), '0');
                first = wide.data();
            }
            std::copy(d.digits, d.digits + 9, first);
            std::fill(first + 9, first + kept, '0');
            length = kept;
        } else {
            digits[0] = '0';  // room for a carry
            std::copy(d.digits, d.digits + kept, digits + 1);
            length = kept + 1;
            if (d.digits[kept] >= '5' && IncrementDigits(digits + 1, digits + length)) digits[0] = '1';
            if (digits[0] == '0') {
                ++first;
                --length;
            }
        }
    } else {
        digits[length++] = '0';
    }

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
        const Decimal9 d = ToDecimal9(std::fabs(value));
        exponent = d.exponent;
        std::copy(d.digits, d.digits + std::min(significant, 9), mantissa.data());
        if (significant < 9 && d.digits[significant] >= '5' &&
            IncrementDigits(mantissa.data(), mantissa.data() + significant)) {
            mantissa[0] = '1';
            ++exponent;
        }
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

f64 Val(std::string_view text) { return ScanNumber(text, SkipSpace(text, 0)).value; }

f64 StrictNumber(std::string_view text) {
    const ScannedNumber number = ScanNumber(text, SkipSpace(text, 0));
    if (!number.found || SkipSpace(text, number.end) != text.size()) {
        Fail(kTypeMismatch, "type mismatch: \"" + std::string(text) + "\" is not a number");
    }
    return number.value;
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
