#pragma once

#include "log/lumetrix_logger.h"

#include <QString>

#include <concepts>
#include <cstdint>
#include <type_traits>
#include <utility>

namespace quorin {

// The log settings of the settings file.
struct ApplicationLogSettings {
    std::int32_t generation = 0; // number of old files to keep besides the current one
    std::int32_t queueSize = 0;  // pool size of the logging library, in lines
    QString level;               // "debug", "info", "warn" or "error" in any case; else "info"
};

// Returns the folder of the log files.
[[nodiscard]] QString logFolder();

// The log of this process. Use the functions of log/log.h to write to it. The first use loads the
// logging library; if it cannot be loaded, nothing is logged. Levels are not filtered here: the
// library decides which lines it writes. Thread-safe.
class QuorinGatewayApplicationLogger : public lumetrix::Logger {
public:
    static void logDebug(const QString& message) { write(lumetrix::Level::Debug, message); }
    static void logInfo(const QString& message) { write(lumetrix::Level::Info, message); }
    static void logWarn(const QString& message) { write(lumetrix::Level::Warn, message); }
    static void logError(const QString& message) { write(lumetrix::Level::Error, message); }

    // Calls `build` for the message, but only if the library provides lumetrix_log or a LogCapture
    // exists.
    template<std::invocable MessageBuilder>
    requires std::same_as<std::invoke_result_t<MessageBuilder>, QString>
    static void logDebug(MessageBuilder&& build) {
        if (isWriting()) {
            logDebug(std::forward<MessageBuilder>(build)());
        }
    }

    // Creates the log directory if it is missing and configures the library. Call once, before the
    // gateway starts its threads.
    static void setUpApplicationLog(const ApplicationLogSettings& settings);

    // Releases the library's logger, which writes out all queued lines. Call at the end of a run.
    static void shutDownLog();

private:
    QuorinGatewayApplicationLogger();

    static QuorinGatewayApplicationLogger& instance();
    // Returns false if write() does nothing.
    static bool isWriting();
    static void write(lumetrix::Level level, const QString& message);
};

} // namespace quorin
