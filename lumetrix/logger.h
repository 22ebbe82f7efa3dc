#pragma once

#include "log_file.h"

#include <atomic>
#include <filesystem>
#include <limits>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string_view>

namespace lumetrix2 {

class Output;
class Writer;

// The logger behind the C functions: off until start(), and off again after release(). While it is
// off every other call does nothing. Thread-safe; numbers and units are those of lumetrix.h.
class Logger {
public:
    Logger();
    ~Logger();

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    // Does nothing when the logger is on. Throws std::exception when it cannot be started.
    void start();
    void release();

    // False for a message that log() would leave out.
    bool isLogged(int level) const { return level >= lowestLevel_.load(std::memory_order_relaxed); }
    // Queues the message, whatever its level.
    void log(int level, std::string_view message);

    void setLevel(int level);
    void setQueueLength(int lines);
    void setFile(const std::filesystem::path& directory, const std::filesystem::path& baseName);
    void setRotation(const Rotation& rotation);
    void setConsole(bool enabled);
    void sync();
    // sync(), and the lines held for want of a directory go to standard error.
    void outputAll();

private:
    static constexpr int kOff = std::numeric_limits<int>::max();

    // The old writer ends, all its lines written, before the new one gets a line.
    void setWriter(std::unique_ptr<Writer> writer);
    // Lines logged before the change are written as things stood before it.
    template<typename Change>
    void changeOutput(Change&& change);

    std::atomic<int> lowestLevel_{kOff}; // of the numbers that are logged

    std::mutex control_; // held by every call but log, to its end
    std::shared_ptr<Output> output_;
    std::unique_ptr<Writer> writer_; // changed under gate_; null: off

    std::shared_mutex gate_; // shared by calls of log that use writer_
    // New calls of log then wait for control_: as long as some are inside, the gate would let in
    // more of them, and whoever wants to change the writer might wait for ever.
    std::atomic<bool> gateWanted_{false};
};

} // namespace lumetrix2
