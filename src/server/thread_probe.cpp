#include "server/thread_probe.h"

#include <chrono>
#include <new>
#include <system_error>
#include <thread>

using namespace std::chrono_literals;

namespace quorin {

namespace {

// A pool keeps a thread for 30 seconds after its last task.
constexpr std::chrono::milliseconds kKept = 20s;

} // namespace

// The system keeps the stack of the thread that has ended for the next one.
bool ThreadProbe::startThread() {
    try {
        std::thread([] {}).join();
        return true;
    } catch (const std::system_error&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool ThreadProbe::canRun(int threads) {
    const bool isKnown = threads <= seen_ && !sinceSeen_.hasExpired(kKept.count());
    if (isKnown) {
        return true;
    }
    if (!start_()) {
        return false;
    }
    seen_ = threads;
    sinceSeen_.start();
    return true;
}

} // namespace quorin
