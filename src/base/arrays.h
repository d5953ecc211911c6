// Arrays of a run: allocated from 0 and used from 1, every access checked
// against the bounds (failure 9). A two-index array has its first index as
// the fast one: the slot of A(i, j) is j * (upper bound of i + 1) + i, the
// same order the suite's files use, so a block of a file maps onto a run of
// slots. Storage comes zero-filled from the system, so a large array costs
// nothing until it is touched.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <type_traits>

#include "base/failure.h"

namespace tremodal {

// What the run's arrays may take together: by default the machine's memory.
// A header that asks for more than this fails with 7 before anything is
// allocated, rather than having the system hand out pages it cannot back.
// Tools that run the readers on arbitrary input set a smaller budget.
std::int64_t MemoryBudget();
void SetMemoryBudget(std::int64_t bytes);
// Fails with 7 when `bytes` (negative: a size beyond 64 bits) exceed the budget.
void RequireMemory(std::int64_t bytes, const char* what);

namespace detail {
struct FreeDeleter {
    void operator()(void* p) const { std::free(p); }
};
// Zero-filled storage for count elements of size bytes; 7 when it cannot be
// had, 9 for a negative count.
void* AllocateZeroed(std::int64_t count, std::size_t size);
[[noreturn]] void FailSubscript(std::int64_t index, std::int64_t upper);
}  // namespace detail

template <class T>
class Array1 {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    Array1() = default;
    explicit Array1(std::int64_t upper) { Allocate(upper); }

    // Allocates 0..upper, discarding what the array held, all zero.
    void Allocate(std::int64_t upper) {
        data_.reset(static_cast<T*>(detail::AllocateZeroed(upper + 1, sizeof(T))));
        upper_ = upper;
    }
    void Clear() { Allocate(upper_); }

    T& operator()(std::int64_t i) {
        if (i < 0 || i > upper_) detail::FailSubscript(i, upper_);
        return data_.get()[i];
    }
    const T& operator()(std::int64_t i) const {
        if (i < 0 || i > upper_) detail::FailSubscript(i, upper_);
        return data_.get()[i];
    }

    std::int64_t Upper() const { return upper_; }
    // Raw slots 0..Upper(), for bulk reads and writes of whole blocks.
    T* Data() { return data_.get(); }
    const T* Data() const { return data_.get(); }

private:
    std::unique_ptr<T, detail::FreeDeleter> data_;
    std::int64_t upper_ = -1;
};

template <class T>
class Array2 {
    static_assert(std::is_trivially_copyable_v<T>);

public:
    Array2() = default;

    // Allocates (0..upper1, 0..upper2), discarding what the array held.
    void Allocate(std::int64_t upper1, std::int64_t upper2) {
        if (upper1 < -1 || upper2 < -1) detail::FailSubscript(upper1 < -1 ? upper1 : upper2, -1);
        std::int64_t count = 0;
        if (__builtin_mul_overflow(upper1 + 1, upper2 + 1, &count)) Fail(kOutOfMemory, "array too large");
        data_.reset(static_cast<T*>(detail::AllocateZeroed(count, sizeof(T))));
        upper1_ = upper1;
        upper2_ = upper2;
    }

    T& operator()(std::int64_t i, std::int64_t j) { return data_.get()[Slot(i, j)]; }
    const T& operator()(std::int64_t i, std::int64_t j) const { return data_.get()[Slot(i, j)]; }

    // Slots 0..last of column j, which lie side by side since the first
    // index is the fast one: checked once, for loops that run down them.
    T* Column(std::int64_t j, std::int64_t last) {
        (void)Slot(last, j);
        return data_.get() + Slot(0, j);
    }
    const T* Column(std::int64_t j, std::int64_t last) const {
        (void)Slot(last, j);
        return data_.get() + Slot(0, j);
    }

    std::int64_t Upper1() const { return upper1_; }
    std::int64_t Upper2() const { return upper2_; }
    T* Data() { return data_.get(); }
    const T* Data() const { return data_.get(); }

private:
    std::int64_t Slot(std::int64_t i, std::int64_t j) const {
        if (i < 0 || i > upper1_) detail::FailSubscript(i, upper1_);
        if (j < 0 || j > upper2_) detail::FailSubscript(j, upper2_);
        return j * (upper1_ + 1) + i;
    }

    std::unique_ptr<T, detail::FreeDeleter> data_;
    std::int64_t upper1_ = -1;
    std::int64_t upper2_ = -1;
};

}  // namespace tremodal
