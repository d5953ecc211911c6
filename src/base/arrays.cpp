#include "base/arrays.h"

#include <sys/mman.h>
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <string>

namespace tremodal {

namespace {

std::int64_t PhysicalMemory() {
    const long pages = ::sysconf(_SC_PHYS_PAGES);
    const long pageSize = ::sysconf(_SC_PAGESIZE);
    if (pages <= 0 || pageSize <= 0) return INT64_MAX;
    return std::int64_t(pages) * std::int64_t(pageSize);
}

std::int64_t budget = -1;  // not yet known

}  // namespace

std::int64_t MemoryBudget() {
    if (budget < 0) budget = PhysicalMemory();
    return budget;
}

void SetMemoryBudget(std::int64_t bytes) { budget = bytes; }

void RequireMemory(std::int64_t bytes, const char* what) {
    if (bytes < 0 || bytes > MemoryBudget()) {
        Fail(kOutOfMemory,
             std::string("out of memory: ") + what + " would take more memory than the machine has");
    }
}

}  // namespace tremodal

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
    std::int64_t bytes = 0;
    if (__builtin_mul_overflow(count, std::int64_t(size), &bytes)) bytes = -1;
    RequireMemory(bytes, "an array");
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
