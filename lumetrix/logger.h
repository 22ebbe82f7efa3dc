#pragma once

#include "log_file.h"

#include <atomic>
#include <filesystem>
#include <limits>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string_view>

namespace lumetrix {

class Output;
class Writer;

// Implements the C functions; levels and units are those of lumetrix.h. The logger is off until
// start() and after release(); while it is off, all other functions do nothing. Thread-safe.
class Logger {
public:
    Logger();
    ~Logger();

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    // Does nothing if the logger is on. Throws a std::exception if the writer thread cannot be
    // started.
    void start();
    void release();

    // Returns false if messages of this level are below the output level or the logger is off.
    bool isLogged(int level) const { return level >= minLevel_.load(std::memory_order_relaxed); }
    // Queues the message. Does not check the output level.
    void log(int level, std::string_view message);

    void setLevel(int level);
    void setQueueLength(int lines);
    void setFile(const std::filesystem::path& directory, const std::filesystem::path& baseName);
    void setRotation(const Rotation& rotation);
    void setConsole(bool enabled);
    void sync();
    // Like sync(), but also writes the held lines to standard error if no directory is set.
    void outputAll();

private:
    static constexpr int kOff = std::numeric_limits<int>::max();

    // Destroys the old writer, which writes all its lines, before the new one receives any.
    void setWriter(std::unique_ptr<Writer> writer);
    // Writes all queued lines, then calls `change` with the output.
    template<typename Change>
    void changeOutput(Change&& change);

    std::atomic<int> minLevel_{kOff}; // the lowest level number that is logged

    std::mutex controlMutex_; // held by every function except log() and isLogged()
    std::shared_ptr<Output> output_;
    std::unique_ptr<Writer> writer_; // guarded by writerMutex_; null: off

    std::shared_mutex writerMutex_; // log() locks it shared
    // While set, log() waits for controlMutex_ before it locks writerMutex_. A shared mutex may
    // prefer readers: without this, a steady stream of log() calls could starve setWriter().
    std::atomic<bool> writerChangePending_{false};
};

} // namespace lumetrix
