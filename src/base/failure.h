// Numbered failures. Every fault the program can meet (a file that is not
// there, a read past the end, an overflow, a bad subscript) is thrown as a
// Failure carrying the number the suite's users know it by. Only the few
// operations that handle failures catch it; everything else lets it pass.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace tremodal {

using i16 = std::int16_t;
using i32 = std::int32_t;
using f32 = float;
using f64 = double;

// The failure numbers that reach a user or a log.
enum FailureNumber : int {
    kInvalidArgument = 5,  // square root or logarithm outside its domain
    kOverflow = 6,         // integer overflow, or a float too big for its target
    kOutOfMemory = 7,      // an allocation that cannot be satisfied
    kSubscriptOutOfRange = 9,
    kDivisionByZero = 11,
    kTypeMismatch = 13,  // text that is not a number in a strict conversion
    kBadFileMode = 52,   // read or write on a file that is not open
    kFileNotFound = 53,
    kInputPastEnd = 62,
    kPathAccessError = 75,  // the file exists but cannot be opened or created
};

class Failure : public std::runtime_error {
public:
    Failure(int number, const std::string& what) : std::runtime_error(what), number_(number) {}
    int Number() const { return number_; }

private:
    int number_;
};

// Throws a Failure with the number and a short description of what failed.
[[noreturn]] void Fail(int number, const std::string& what);

}  // namespace tremodal
