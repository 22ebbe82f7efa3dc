#pragma once

#include "library_pin.h"

#include <spdlog/common.h>

#include <cstddef>
#include <memory>
#include <string_view>

namespace spdlog {
class async_logger;
namespace details {
class thread_pool;
}
} // namespace spdlog

namespace lumetrix {

class Output;

// A queue of lines and the thread that writes them to an output. The destructor writes the queued
// lines and joins the thread.
class Writer {
public:
    static constexpr int kDefaultQueueLength = 1024;
    static constexpr int kMaxQueueLength = 65536; // allocated up front: about 30 MB

    // `queueLength` is in lines: below 1 is replaced by the default, above the maximum by the
    // maximum. Throws a std::exception if the thread cannot be started.
    Writer(std::shared_ptr<Output> output, int queueLength);
    ~Writer();

    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // Queues a line; blocks while the queue is full. Thread-safe.
    void write(spdlog::level::level_enum level, std::string_view message);
    // Blocks until all lines queued before the call are written and flushed. Not to be called by
    // two threads at a time.
    void sync();

private:
    class FlushingSink;

    LibraryPin pin_;
    std::shared_ptr<spdlog::details::thread_pool> pool_;
    std::shared_ptr<FlushingSink> sink_;
    std::shared_ptr<spdlog::async_logger> logger_;
};

} // namespace lumetrix
