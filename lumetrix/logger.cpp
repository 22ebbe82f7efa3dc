#include "logger.h"

#include "lumetrix.h"
#include "output.h"
#include "writer.h"

#include <algorithm>
#include <utility>

namespace lumetrix {
namespace {

// The level numbers are those of spdlog plus one.
spdlog::level::level_enum spdlogLevel(int level) {
    static_assert(LUMETRIX_DEBUG == SPDLOG_LEVEL_DEBUG + 1);
    static_assert(LUMETRIX_ERROR == SPDLOG_LEVEL_ERROR + 1);
    const int clamped = std::clamp<int>(level, LUMETRIX_DEBUG, LUMETRIX_ERROR);
    return static_cast<spdlog::level::level_enum>(clamped - 1);
}

// The lowest level number that is logged at this output level.
int minLoggedLevel(int outputLevel) {
    if (outputLevel <= LUMETRIX_DEBUG) {
        return std::numeric_limits<int>::min();
    }
    return std::min<int>(outputLevel, LUMETRIX_ERROR);
}

} // namespace

Logger::Logger() = default;
Logger::~Logger() = default;

void Logger::start() {
    const std::lock_guard lock(controlMutex_);
    if (writer_) {
        return;
    }
    auto output = std::make_shared<Output>();
    auto writer = std::make_unique<Writer>(output, Writer::kDefaultQueueLength);
    output_ = std::move(output);
    setWriter(std::move(writer));
    minLevel_ = minLoggedLevel(LUMETRIX_DEBUG);
}

void Logger::release() {
    const std::lock_guard lock(controlMutex_);
    if (!writer_) {
        return;
    }
    minLevel_ = kOff;
    setWriter(nullptr);
    const auto output = std::exchange(output_, nullptr);
    output->close();
    output->writeHeldLinesToStandardError();
}

void Logger::log(int level, std::string_view message) {
    if (writerChangePending_) {
        const std::lock_guard waitForChange(controlMutex_);
    }
    const std::shared_lock lock(writerMutex_);
    if (writer_) {
        writer_->write(spdlogLevel(level), message);
    }
}

void Logger::setLevel(int level) {
    const std::lock_guard lock(controlMutex_);
    if (!writer_) {
        return;
    }
    minLevel_ = minLoggedLevel(level);
    output_->set_level(spdlogLevel(level));
}

void Logger::setQueueLength(int lines) {
    const std::lock_guard lock(controlMutex_);
    if (writer_) {
        setWriter(std::make_unique<Writer>(output_, lines));
    }
}

void Logger::setFile(const std::filesystem::path& directory,
                     const std::filesystem::path& baseName) {
    changeOutput([&](Output& output) { output.setFile(directory, baseName); });
}

void Logger::setRotation(const Rotation& rotation) {
    changeOutput([&](Output& output) { output.setRotation(rotation); });
}

void Logger::setConsole(bool enabled) {
    changeOutput([&](Output& output) { output.setConsole(enabled); });
}

void Logger::sync() {
    changeOutput([](Output&) {});
}

void Logger::outputAll() {
    changeOutput([](Output& output) { output.writeHeldLinesToStandardError(); });
}

void Logger::setWriter(std::unique_ptr<Writer> writer) {
    writerChangePending_ = true;
    {
        const std::lock_guard lock(writerMutex_);
        writer_ = std::move(writer);
    }
    writerChangePending_ = false;
}

template<typename Change>
void Logger::changeOutput(Change&& change) {
    const std::lock_guard lock(controlMutex_);
    if (!writer_) {
        return;
    }
    writer_->sync();
    change(*output_);
}

} // namespace lumetrix
