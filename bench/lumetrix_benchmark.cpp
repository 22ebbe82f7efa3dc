// Cost of a log call: through the C functions of the logging library, and through spdlog with the
// same configuration (a queue of 8192 lines that blocks when full, one writer thread, a daily file,
// the same line pattern).
//   BelowLevel<...>  a call below the output level. SpdlogByCall calls spdlog through a function
//                    pointer, so the call cannot be inlined, as with a shared library.
//   Line<...>/N      50,000 lines from each of N threads, until all are written to the file

#include "lumetrix.h"

#include <spdlog/async_logger.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/daily_file_sink.h>

#include <benchmark/benchmark.h>

#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int kQueueLength = 8192;
constexpr int kLinesPerThread = 50'000;
constexpr const char* kMessage = "GET fwfiles/controller-4.2.1.zip - -  200 0";

// Temporary directory for the log files of one benchmark.
class TemporaryDirectory {
public:
    TemporaryDirectory() : path_(std::filesystem::temp_directory_path() / "lumetrix_benchmark") {
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TemporaryDirectory() { std::filesystem::remove_all(path_); }

    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

private:
    std::filesystem::path path_;
};

class Lumetrix {
public:
    Lumetrix() {
        lumetrix_set_rotation_with_date(logger_, 8);
        lumetrix_set_pool_size(logger_, kQueueLength);
        lumetrix_set_output_level(logger_, LUMETRIX_INFO);
        lumetrix_set_output_dir(logger_, directory_.path().string().c_str(), "Gateway");
    }
    ~Lumetrix() { lumetrix_release(logger_); }

    Lumetrix(const Lumetrix&) = delete;
    Lumetrix& operator=(const Lumetrix&) = delete;

    void debug() { log_(logger_, "GW", LUMETRIX_DEBUG, kMessage); }
    void info() { log_(logger_, "GW", LUMETRIX_INFO, kMessage); }

private:
    TemporaryDirectory directory_;
    lumetrix_logger* logger_ = lumetrix_get_logger();
    decltype(lumetrix_log)* log_ = lumetrix_log; // the gateway also calls through a pointer
};

class Spdlog {
public:
    Spdlog() { logger_->set_pattern("_dt:%Y%m%dT%H%M%S.%e%z\t_l:%l\t_th:%t\t_m:Quorin5\tmsg:%v"); }
    ~Spdlog() { pool_.reset(); } // writes the queued lines

    Spdlog(const Spdlog&) = delete;
    Spdlog& operator=(const Spdlog&) = delete;

    void debug() { logger_->log(spdlog::level::debug, spdlog::string_view_t(kMessage)); }
    void info() { logger_->log(spdlog::level::info, spdlog::string_view_t(kMessage)); }

protected:
    TemporaryDirectory directory_;
    std::shared_ptr<spdlog::details::thread_pool> pool_ =
        std::make_shared<spdlog::details::thread_pool>(kQueueLength, 1U);
    std::shared_ptr<spdlog::async_logger> logger_ = std::make_shared<spdlog::async_logger>(
        "GW",
        std::make_shared<spdlog::sinks::daily_file_sink_mt>(
            (directory_.path() / "Gateway.log").native(), 0, 0),
        pool_, spdlog::async_overflow_policy::block);
};

// spdlog behind a call that cannot be inlined.
class SpdlogByCall : public Spdlog {
public:
    void debug() { log_(this, "GW", LUMETRIX_DEBUG, kMessage); }

private:
    static void log(SpdlogByCall* self, const char* name, int level, const char* message) {
        benchmark::DoNotOptimize(name);
        const auto number = static_cast<spdlog::level::level_enum>(level - 1);
        if (self->logger_->should_log(number)) {
            self->logger_->log(number, spdlog::string_view_t(message));
        }
    }

    void (*volatile log_)(SpdlogByCall*, const char*, int, const char*) = log;
};

template<typename Logger>
void BelowLevel(benchmark::State& state) {
    Logger logger;
    for (auto _ : state) {
        logger.debug();
        benchmark::ClobberMemory();
    }
}

template<typename Logger>
void Line(benchmark::State& state) {
    const auto threads = static_cast<std::size_t>(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        auto logger = std::make_unique<Logger>();
        state.ResumeTiming();
        std::vector<std::jthread> callers;
        for (std::size_t thread = 0; thread < threads; ++thread) {
            callers.emplace_back([&logger] {
                for (int line = 0; line < kLinesPerThread; ++line) {
                    logger->info();
                }
            });
        }
        callers.clear();
        logger.reset();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * kLinesPerThread);
}

BENCHMARK(BelowLevel<Spdlog>);
BENCHMARK(BelowLevel<SpdlogByCall>);
BENCHMARK(BelowLevel<Lumetrix>);
BENCHMARK(Line<Spdlog>)
    ->Arg(1)
    ->Arg(8)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Line<Lumetrix>)
    ->Arg(1)
    ->Arg(8)
    ->UseRealTime()
    ->MeasureProcessCPUTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
