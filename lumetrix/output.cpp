#include "output.h"

#include "line_format.h"
#include "standard_error.h"

#include <spdlog/fmt/fmt.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <exception>
#include <utility>

namespace lumetrix {
namespace {

// Writes a warning about the log itself.
void writeNotice(spdlog::sinks::sink& target, std::string_view text) {
    target.log({spdlog::string_view_t{}, spdlog::level::warn, {text.data(), text.size()}});
}

} // namespace

void Output::setFile(std::filesystem::path directory, std::filesystem::path baseName) {
    const std::lock_guard lock(mutex_);
    location_ = FileLocation{std::move(directory), std::move(baseName)};
    failedAt_.reset();
    openFile(spdlog::details::os::now());
}

void Output::setRotation(const Rotation& rotation) {
    const std::lock_guard lock(mutex_);
    rotation_ = rotation;
    if (file_) {
        openFile(spdlog::details::os::now());
    }
}

void Output::setConsole(bool enabled) {
    const std::lock_guard lock(mutex_);
    console_.reset();
    if (!enabled) {
        return;
    }
    console_ = std::make_shared<spdlog::sinks::stdout_color_sink_mt>();
    console_->set_formatter(makeLineFormatter(kConsolePattern));
}

void Output::writeHeldLinesToStandardError() {
    const std::lock_guard lock(mutex_);
    if (location_ || !heldLines_) {
        return;
    }
    spdlog::sinks::stderr_sink_mt standardError;
    standardError.set_formatter(makeLineFormatter(kLinePattern));
    writeHeldLines(standardError, *std::exchange(heldLines_, HeldLines(kMaxHeldLines)));
}

void Output::close() {
    const std::lock_guard lock(mutex_);
    flush_();
    file_.reset();
}

void Output::sink_it_(const spdlog::details::log_msg& message) {
    if (console_) {
        console_->log(message);
    }
    if (!file_ && shouldOpenFile(message.time)) {
        openFile(message.time);
    }
    if (file_) {
        try {
            file_->log(message);
        } catch (const std::exception& error) {
            handleFileError(error.what(), message.time);
        }
    } else if (heldLines_) {
        heldLines_->push_back(spdlog::details::log_msg_buffer(message));
    }
}

void Output::flush_() {
    if (!file_) {
        return;
    }
    try {
        file_->flush();
    } catch (const std::exception& error) {
        handleFileError(error.what(), spdlog::details::os::now());
    }
}

bool Output::shouldOpenFile(Time now) const {
    return location_ && (!failedAt_ || std::chrono::abs(now - *failedAt_) >= kRetryInterval);
}

void Output::openFile(Time now) {
    file_.reset(); // close first: it may be the same file
    try {
        file_ = openLogFile(location_->directory, location_->baseName, rotation_);
        if (heldLines_) {
            writeHeldLines(*file_, *std::exchange(heldLines_, std::nullopt));
        } else if (failedAt_) {
            writeNotice(*file_, "lines are missing here: the log could not be written");
        }
        file_->flush();
        failedAt_.reset();
    } catch (const std::exception& error) {
        handleFileError(error.what(), now);
    }
}

void Output::handleFileError(std::string_view reason, Time now) {
    file_.reset();
    if (!failedAt_) {
        reportToStandardError(fmt::format("the log cannot be written: {}", reason));
    }
    failedAt_ = now;
}

void Output::writeHeldLines(spdlog::sinks::sink& target, HeldLines lines) {
    if (const auto dropped = lines.overrun_counter(); dropped > 0) {
        writeNotice(
            target,
            fmt::format("{} lines are missing here: too many before the log was set up", dropped));
    }
    for (; !lines.empty(); lines.pop_front()) {
        if (should_log(lines.front().level)) {
            target.log(lines.front());
        }
    }
}

} // namespace lumetrix
