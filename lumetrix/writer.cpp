#include "writer.h"

#include "output.h"

#include <spdlog/async_logger.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/sink.h>

#include <algorithm>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

namespace lumetrix {
namespace {

std::size_t validQueueLength(int lines) {
    if (lines < 1) {
        return Writer::kDefaultQueueLength;
    }
    return static_cast<std::size_t>(std::min(lines, Writer::kMaxQueueLength));
}

} // namespace

// Passes lines from the queue to the output, on the writer thread. Flushes whenever the queue is
// empty: single lines reach the file at once, bursts are written in large blocks. Counts the flush
// requests that came through the queue, for sync().
class Writer::FlushingSink final : public spdlog::sinks::sink {
public:
    FlushingSink(std::shared_ptr<Output> output, spdlog::details::thread_pool& pool)
        : output_(std::move(output)), pool_(pool) {}

    void log(const spdlog::details::log_msg& message) override {
        output_->log(message);
        if (pool_.queue_size() == 0) {
            output_->flush();
        }
    }

    void flush() override {
        output_->flush();
        {
            const std::lock_guard lock(mutex_);
            ++flushes_;
        }
        flushed_.notify_all();
    }

    void set_pattern(const std::string&) override {}
    void set_formatter(std::unique_ptr<spdlog::formatter>) override {}

    std::uint64_t flushes() {
        const std::lock_guard lock(mutex_);
        return flushes_;
    }

    void waitForFlushAfter(std::uint64_t flushes) {
        std::unique_lock lock(mutex_);
        flushed_.wait(lock, [&] { return flushes_ > flushes; });
    }

private:
    std::shared_ptr<Output> output_;
    spdlog::details::thread_pool& pool_;
    std::mutex mutex_;
    std::condition_variable flushed_;
    std::uint64_t flushes_ = 0;
};

Writer::Writer(std::shared_ptr<Output> output, int queueLength)
    : pool_(std::make_shared<spdlog::details::thread_pool>(validQueueLength(queueLength), 1)),
      sink_(std::make_shared<FlushingSink>(std::move(output), *pool_)),
      logger_(std::make_shared<spdlog::async_logger>(std::string(), sink_, pool_,
                                                     spdlog::async_overflow_policy::block)) {
    logger_->set_level(spdlog::level::trace);
}

Writer::~Writer() {
    pool_.reset(); // joins the thread, which still uses logger_ and sink_
}

void Writer::write(spdlog::level::level_enum level, std::string_view message) {
    logger_->log(spdlog::source_loc{}, level,
                 spdlog::string_view_t(message.data(), message.size()));
}

void Writer::sync() {
    const auto before = sink_->flushes();
    logger_->flush();
    sink_->waitForFlushAfter(before);
}

} // namespace lumetrix
