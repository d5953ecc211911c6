// The 256-bit registers of x86-64 processors with AVX2: the few loops that
// handle every value of a large model go four doubles at a time there,
// chosen when the program runs. Every operation is the one the plain loop
// does, in the same order, so the results keep their bits.
#pragma once

#if defined(__x86_64__) && (defined(__GNUC__) || defined(__clang__))
#define TREMODAL_WIDE_REGISTERS 1
#include <immintrin.h>
#define TREMODAL_WIDE __attribute__((target("avx2")))
#else
#define TREMODAL_WIDE_REGISTERS 0
#endif

namespace tremodal {

// Whether the processor has them and they are allowed.
bool HasWideRegisters();
// On unless a test turns them off, to hold the wide loops against the plain.
void AllowWideRegisters(bool allow);

}  // namespace tremodal
