#pragma once

#include <functional>

namespace quorin {

// Calls functions when the next QCoreApplication of this process, which another library creates,
// enters and leaves its event loop. Both are called on its thread. A gateway enters its event loop
// when it has started completely and leaves it before it releases what excludes another gateway. At
// most one object per process.
class EventLoopHook {
public:
    EventLoopHook(std::function<void()> onEnter, std::function<void()> onLeave);
    ~EventLoopHook();

    EventLoopHook(const EventLoopHook&) = delete;
    EventLoopHook& operator=(const EventLoopHook&) = delete;
};

} // namespace quorin
