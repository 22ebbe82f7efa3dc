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

namespace lumetrix2 {

class Output;

// The queue of lines and the one thread that takes them to an output. The destructor writes out
// what is queued and joins the thread. Throws std::exception when the thread cannot be started.
class Writer {
public:
    static constexpr int kDefaultQueueLength = 1024;
    static constexpr int kMaxQueueLength = 65536; // room for all lines is taken at once: 30 MB

    // A queue of `queueLength` lines; below 1 the default, above the maximum that.
    Writer(std::shared_ptr<Output> output, int queueLength);
    ~Writer();

    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // Queues a line; waits while the queue is full. Any thread.
    void write(spdlog::level::level_enum level, std::string_view message);
    // Returns when everything queued before has been written and flushed. One thread at a time.
    void sync();

private:
    class Feed;

    LibraryPin pin_;
    std::shared_ptr<spdlog::details::thread_pool> pool_;
    std::shared_ptr<Feed> feed_;
    std::shared_ptr<spdlog::async_logger> logger_;
};

} // namespace lumetrix2
