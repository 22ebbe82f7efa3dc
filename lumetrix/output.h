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

namespace lumetrix2 {

// Where lines go: to the log file, and to the console when asked. Lines that come before the file
// is known are held for it. A file that fails is told once on standard error, its lines are lost,
// and it is tried again from time to time; nothing here throws or waits for it.
//
// Its level (set_level) decides only which of the held lines are written. Thread-safe.
class Output final : public spdlog::sinks::base_sink<std::mutex> {
public:
    static constexpr std::size_t kHeldLines = 1024; // the newest are held
    static constexpr std::chrono::seconds kRetryAfter{10};

    // Turns to the file of `baseName` in `directory` and writes the held lines there.
    void setFile(std::filesystem::path directory, std::filesystem::path baseName);
    // Holds for the file that is open, too.
    void setRotation(const Rotation& rotation);
    void setConsole(bool enabled);
    // Writes the held lines to standard error, unless setFile was called.
    void giveUpHeldLines();
    // Closes the file; the last call.
    void close();

private:
    struct Place {
        std::filesystem::path directory;
        std::filesystem::path baseName;
    };
    using Time = spdlog::log_clock::time_point;
    using HeldLines = spdlog::details::circular_q<spdlog::details::log_msg_buffer>;

    void sink_it_(const spdlog::details::log_msg& message) override;
    void flush_() override;

    bool isTimeToOpen(Time now) const;
    void openFile(Time now);
    void fileFailed(std::string_view reason, Time now);
    void writeHeldLines(spdlog::sinks::sink& target, HeldLines held);

    std::optional<Place> place_;
    Rotation rotation_;
    std::shared_ptr<spdlog::sinks::sink> file_;    // null: not known yet, or failed
    std::shared_ptr<spdlog::sinks::sink> console_; // null: off
    std::optional<HeldLines> held_{kHeldLines};    // until a file was opened
    std::optional<Time> failedAt_;                 // the last attempt on a file that fails
};

} // namespace lumetrix2
