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

namespace lumetrix2 {
namespace {

std::size_t queueLength(int wanted) {
    if (wanted < 1) {
        return Writer::kDefaultQueueLength;
    }
    return static_cast<std::size_t>(std::min(wanted, Writer::kMaxQueueLength));
}

} // namespace

// Stands between queue and output, on the writing thread: flushes whenever the queue has run dry,
// so that a line is in the file at once when there is little to do and in large blocks when there
// is much; and counts the flushes that were queued.
class Writer::Feed final : public spdlog::sinks::sink {
public:
    Feed(std::shared_ptr<Output> output, spdlog::details::thread_pool& pool)
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

Writer::Writer(std::shared_ptr<Output> output, int wantedQueueLength)
    : pool_(std::make_shared<spdlog::details::thread_pool>(queueLength(wantedQueueLength), 1)),
      feed_(std::make_shared<Feed>(std::move(output), *pool_)),
      logger_(std::make_shared<spdlog::async_logger>(std::string(), feed_, pool_,
                                                     spdlog::async_overflow_policy::block)) {
    logger_->set_level(spdlog::level::trace);
}

Writer::~Writer() {
    pool_.reset(); // joins the thread; the queued lines still need logger and feed
}

void Writer::write(spdlog::level::level_enum level, std::string_view message) {
    logger_->log(spdlog::source_loc{}, level,
                 spdlog::string_view_t(message.data(), message.size()));
}

void Writer::sync() {
    const auto before = feed_->flushes();
    logger_->flush();
    feed_->waitForFlushAfter(before);
}

} // namespace lumetrix2
