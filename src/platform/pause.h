#pragma once

#include <chrono>

namespace quorin::platform {

// Suspends the calling thread for at least `time`. On Windows more precise than the system's sleep
// functions, which extend a pause of 10 ms to 15.6 ms or more. Returns at once if `time` is not
// positive. Thread-safe.
void pause(std::chrono::microseconds time);

} // namespace quorin::platform
