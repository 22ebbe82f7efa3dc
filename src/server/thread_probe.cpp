#include "server/thread_probe.h"

#include <chrono>

using namespace std::chrono_literals;

namespace quorin {

namespace {

// A pool keeps a thread for 30 seconds after its last task.
constexpr std::chrono::milliseconds kKept = 20s;

} // namespace

bool ThreadProbe::canRun(int threads) {
    const bool isKnown = threads <= seen_ && !sinceSeen_.hasExpired(kKept.count());
    if (isKnown) {
        return true;
    }
    if (!canStart_()) {
        return false;
    }
    seen_ = threads;
    sinceSeen_.start();
    return true;
}

} // namespace quorin
