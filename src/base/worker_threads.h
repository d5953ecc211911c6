// Worker threads for work whose result does not depend on the order in which
// it is done. What they make is used in the order a single thread would use
// it, so every file and every failure stays what one thread gives.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <thread>
#include <vector>

#include "base/failure.h"

namespace tremodal {

// How many threads a run may work on at once: the processor's cores unless
// set. 1 works everything on the calling thread.
int WorkerThreads();
void SetWorkerThreads(int count);

// Each kind of work names the least share worth a thread of its own; with
// small shares on, one item is enough, so that tests of small models run
// their work side by side as a large model does.
void SetSmallShares(bool on);
bool SmallShares();

// While one stands, the work started on this thread stays on it: for work
// that itself runs beside other threads.
struct OneThreadHere {
    OneThreadHere();
    ~OneThreadHere();
    OneThreadHere(const OneThreadHere&) = delete;
    OneThreadHere& operator=(const OneThreadHere&) = delete;
};

// Splits first..last into one run of neighbouring items a thread, at least
// `least` items each, and calls `work(from, to)` for every run, the first on
// the calling thread. The work of different runs must not depend on each
// other's. Returns false when the work of any run returned false or threw:
// the caller then goes through the items again in order, on one thread,
// where the failure is met in the order a single thread meets it.
template <class Work>
bool ForEachRange(std::int64_t first, std::int64_t last, std::int64_t least, Work work) {
    if (last < first) return true;
    const std::int64_t items = last - first + 1;
    const std::int64_t share = SmallShares() ? 1 : std::max<std::int64_t>(least, 1);
    const int threads = int(std::clamp<std::int64_t>(items / share, 1, WorkerThreads()));
    if (threads <= 1) return work(first, last);
    std::atomic<bool> good{true};
    auto runOf = [&](int t) {
        const std::int64_t from = first + items * t / threads;
        const std::int64_t to = first + items * (t + 1) / threads - 1;
        try {
            if (!work(from, to)) good = false;
        } catch (...) {
            good = false;
        }
    };
    std::vector<std::thread> others;
    {
        struct Joiner {
            std::vector<std::thread>& threads;
            ~Joiner() {
                for (std::thread& thread : threads) thread.join();
            }
        } joiner{others};
        for (int t = 1; t < threads; ++t) others.emplace_back(runOf, t);
        runOf(0);
    }
    return good;
}

// Rows first..last of a double sum, each row's terms worked out by
// `rowTerms(i, terms)` (which returns false where a term would fail, and must
// not throw) and handed to `useRow(i, terms, good)` in ascending row order on
// the calling thread. With more than one thread the rows are worked out ahead
// on W - 1 workers, row i by worker (i - first) mod (W - 1), while the caller
// uses the rows already done; `makeRowTerms()` gives each worker its own copy with its
// own scratch. A failure thrown by useRow stops the workers and passes on.
// Rows may be of any plain element type T, f64 terms by default.
template <class T = f64, class MakeRowTerms, class UseRow>
void ForEachRowInOrder(i32 first, i32 last, std::size_t rowLength, MakeRowTerms makeRowTerms, UseRow useRow) {
    if (last < first) return;
    const std::int64_t rows = std::int64_t(last) - first + 1;
    // The calling thread is busy with the rows as they come, so it counts as
    // one of the threads: a worker fewer keeps every thread on a core. Rows
    // of less than a few megabytes in all are not worth the hand-over of
    // every row from one thread to another.
    const bool worthIt =
        SmallShares() || rows * std::int64_t(rowLength * sizeof(T)) >= (std::int64_t(8) << 20);
    const int workers = worthIt ? int(std::min<std::int64_t>(WorkerThreads() - 1, rows)) : 0;
    if (workers < 1) {
        auto rowTerms = makeRowTerms();
        // Left as the allocation gives it: every row fills all of it.
        std::unique_ptr<T[]> terms(new T[rowLength]);
        for (i32 i = first; i <= last; ++i) useRow(i, terms.get(), rowTerms(i, terms.get()));
        return;
    }

    // A ring of two slots a worker, used in turn: 0 free, 1 done, 2 done with a term
    // that fails, 3 stop.
    struct Slot {
        std::unique_ptr<T[]> terms;
        std::atomic<int> state{0};
    };
    const int ringSize = 2 * workers;
    std::vector<Slot> ring(static_cast<std::size_t>(ringSize));
    for (Slot& slot : ring) slot.terms.reset(new T[rowLength]);
    std::atomic<bool> stop{false};

    std::vector<std::thread> threads;
    struct Joiner {
        std::vector<Slot>& ring;
        std::atomic<bool>& stop;
        std::vector<std::thread>& threads;
        ~Joiner() {
            stop = true;
            for (Slot& slot : ring) {
                slot.state = 3;
                slot.state.notify_all();
            }
            for (std::thread& thread : threads) thread.join();
        }
    } joiner{ring, stop, threads};

    for (int w = 0; w < workers; ++w) {
        threads.emplace_back([&, w, rowTerms = makeRowTerms()]() mutable {
            for (std::int64_t k = w; k < rows; k += workers) {
                Slot& slot = ring[std::size_t(k % ringSize)];
                slot.state.wait(1);
                slot.state.wait(2);
                if (stop || slot.state == 3) return;
                bool good = false;
                try {
                    good = rowTerms(i32(first + k), slot.terms.get());
                } catch (...) {
                    good = false;  // the caller works the row again and meets the failure itself
                }
                slot.state = good ? 1 : 2;
                slot.state.notify_all();
            }
        });
    }
    for (std::int64_t k = 0; k < rows; ++k) {
        Slot& slot = ring[std::size_t(k % ringSize)];
        slot.state.wait(0);
        useRow(i32(first + k), slot.terms.get(), slot.state == 1);
        slot.state = 0;
        slot.state.notify_all();
    }
}

}  // namespace tremodal
