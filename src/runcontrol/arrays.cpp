#include "runcontrol/arrays.h"

#include <string>

namespace tremodal::detail {

void* AllocateZeroed(std::int64_t count, std::size_t size) {
    if (count < 0) Fail(kSubscriptOutOfRange, "negative array bound");
    // calloc hands out pages the kernel zero-fills on first touch, so the
    // large run arrays cost nothing until they are used. Never ask for 0
    // bytes: an empty array is still a valid one.
    void* p = std::calloc(count > 0 ? static_cast<std::size_t>(count) : 1, size);
    if (!p) Fail(kOutOfMemory, "cannot allocate " + std::to_string(count) + " array elements");
    return p;
}

void FailSubscript(std::int64_t index, std::int64_t upper) {
    Fail(kSubscriptOutOfRange,
         "subscript " + std::to_string(index) + " outside 0.." + std::to_string(upper));
}

}  // namespace tremodal::detail
