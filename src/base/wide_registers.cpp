#include "base/wide_registers.h"

#include <atomic>

namespace tremodal {

namespace {

std::atomic<bool> allowed{true};

}  // namespace

bool HasWideRegisters() {
#if TREMODAL_WIDE_REGISTERS
    static const bool has = __builtin_cpu_supports("avx2");
    return has && allowed;
#else
    return false;
#endif
}

void AllowWideRegisters(bool allow) { allowed = allow; }

}  // namespace tremodal
