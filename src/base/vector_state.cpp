#include "base/vector_state.h"

namespace tremodal {

void ClearUpperVectorState() {
#if defined(__x86_64__) || defined(__i386__)
    static const bool hasUpperHalves = __builtin_cpu_supports("avx");
    if (hasUpperHalves) asm volatile("vzeroupper");
#endif
}

}  // namespace tremodal
