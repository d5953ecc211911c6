#include "base/worker_threads.h"

#include <algorithm>

namespace tremodal {

namespace {

std::atomic<int> workerThreads{0};  // 0: not yet set
std::atomic<bool> smallShares{false};
thread_local int aloneDepth = 0;

}  // namespace

int WorkerThreads() {
    if (aloneDepth > 0) return 1;
    const int count = workerThreads;
    if (count > 0) return count;
    return std::clamp(int(std::thread::hardware_concurrency()), 1, 64);
}

void SetWorkerThreads(int count) { workerThreads = std::clamp(count, 1, 64); }

void SetSmallShares(bool on) { smallShares = on; }

bool SmallShares() { return smallShares; }

OneThreadHere::OneThreadHere() { ++aloneDepth; }

OneThreadHere::~OneThreadHere() { --aloneDepth; }

}  // namespace tremodal
