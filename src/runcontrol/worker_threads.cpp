#include "runcontrol/worker_threads.h"

#include <algorithm>

namespace tremodal {

namespace {

std::atomic<int> workerThreads{0};  // 0: not yet set

}  // namespace

int WorkerThreads() {
    const int count = workerThreads;
    if (count > 0) return count;
    return std::clamp(int(std::thread::hardware_concurrency()), 1, 64);
}

void SetWorkerThreads(int count) { workerThreads = std::clamp(count, 1, 64); }

}  // namespace tremodal
