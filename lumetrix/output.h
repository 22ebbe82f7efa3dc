#pragma once

#include "log_file.h"

#include <spdlog/common.h>
#include <spdlog/details/circular_q.h>
#include <spdlog/details/log_msg_buffer.h>
#include <spdlog/sinks/base_sink.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace lumetrix {

// Writes lines to the log file and optionally to standard output. Holds the lines that arrive
// before the file is set. If the file cannot be written, reports it once to standard error, drops
// lines and retries periodically; no function throws. Thread-safe.
//
// The sink's level (set_level) only selects which of the held lines are written.
class Output final : public spdlog::sinks::base_sink<std::mutex> {
public:
    static constexpr std::size_t kMaxHeldLines = 1024; // the oldest are dropped
    static constexpr std::chrono::seconds kRetryInterval{10};

    // Closes the current file, opens the one of `baseName` in `directory` and writes the held lines
    // to it.
    void setFile(std::filesystem::path directory, std::filesystem::path baseName);
    // Applies to the current file too.
    void setRotation(const Rotation& rotation);
    void setConsole(bool enabled);
    // Writes the held lines to standard error. Does nothing if setFile was called.
    void writeHeldLinesToStandardError();
    // Flushes and closes the file. Call last.
    void close();

private:
    struct FileLocation {
        std::filesystem::path directory;
        std::filesystem::path baseName;
    };
    using Time = spdlog::log_clock::time_point;
    using HeldLines = spdlog::details::circular_q<spdlog::details::log_msg_buffer>;

    void sink_it_(const spdlog::details::log_msg& message) override;
    void flush_() override;

    bool shouldOpenFile(Time now) const;
    void openFile(Time now);
    void handleFileError(std::string_view reason, Time now);
    void writeHeldLines(spdlog::sinks::sink& target, HeldLines lines);

    std::optional<FileLocation> location_;
    Rotation rotation_;
    std::shared_ptr<spdlog::sinks::sink> file_;         // null: not set or failed
    std::shared_ptr<spdlog::sinks::sink> console_;      // null: off
    std::optional<HeldLines> heldLines_{kMaxHeldLines}; // no value once a file was opened
    std::optional<Time> failedAt_; // last attempt; no value unless the file failed
};

} // namespace lumetrix
