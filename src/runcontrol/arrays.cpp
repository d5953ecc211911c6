#include "runcontrol/arrays.h"

#include <sys/mman.h>

#include <cstdint>
#include <string>

namespace tremodal::detail {

namespace {

// The mode shapes of a large model fill hundreds of megabytes on their first
// touch. In pages of 2 MiB rather than 4 KiB that is a few hundred faults
// instead of tens of thousands. Only a hint: where the system has no such
// pages the array works the same.
void AskForLargePages(void* p, std::size_t bytes) {
    constexpr std::uintptr_t kLargePage = 2 * 1024 * 1024;
    if (bytes < 4 * kLargePage) return;
    const auto start = reinterpret_cast<std::uintptr_t>(p);
    const std::uintptr_t from = (start + kLargePage - 1) & ~(kLargePage - 1);
    const std::uintptr_t to = (start + bytes) & ~(kLargePage - 1);
    if (to > from) ::madvise(reinterpret_cast<void*>(from), to - from, MADV_HUGEPAGE);
}

}  // namespace

void* AllocateZeroed(std::int64_t count, std::size_t size) {
    if (count < 0) Fail(kSubscriptOutOfRange, "negative array bound");
    // calloc hands out pages the kernel zero-fills on first touch, so the
    // large run arrays cost nothing until they are used. Never ask for 0
    // bytes: an empty array is still a valid one.
    void* p = std::calloc(count > 0 ? static_cast<std::size_t>(count) : 1, size);
    if (!p) Fail(kOutOfMemory, "cannot allocate " + std::to_string(count) + " array elements");
    AskForLargePages(p, static_cast<std::size_t>(count) * size);
    return p;
}

void FailSubscript(std::int64_t index, std::int64_t upper) {
    Fail(kSubscriptOutOfRange, "subscript " + std::to_string(index) + " outside 0.." + std::to_string(upper));
}

}  // namespace tremodal::detail
