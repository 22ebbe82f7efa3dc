#pragma once

#include "log/lumetrix_logger.h"

#include <QString>

#include <concepts>
#include <cstdint>
#include <type_traits>
#include <utility>

// What the settings file says of the application log.
struct ApplicationLogSettings {
    std::int32_t generation = 0; // rotated files kept beside the one written to
    std::int32_t queueSize = 0;  // the logging library's pool size
    QString level;               // "debug", "info", "warn" or "error"
};

// The gateway's one log. All functions may be called from any thread; the first use loads the
// logging library. Without that library every call does nothing.
//
// The levels are not filtered here: which lines are written is the library's affair. A text that
// costs something to build is passed as a function that returns it, and is built only when
// somebody takes it:
//
//     QuorinGatewayApplicationLogger::logDebug([&]() -> QString { return u"Target file : " + name;
//     });
class QuorinGatewayApplicationLogger : public lumetrix::Logger {
public:
    static void logDebug(const QString& message) { write(lumetrix::Level::Debug, message); }
    static void logInfo(const QString& message) { write(lumetrix::Level::Info, message); }
    static void logWarn(const QString& message) { write(lumetrix::Level::Warn, message); }
    static void logError(const QString& message) { write(lumetrix::Level::Error, message); }

    template<std::invocable MessageBuilder>
    requires std::same_as<std::invoke_result_t<MessageBuilder>, QString>
    static void logDebug(MessageBuilder&& build) {
        if (instance().isLogging()) {
            logDebug(std::forward<MessageBuilder>(build)());
        }
    }

    // Makes the log directory when it is missing and tells the library where, how much and from
    // which level on to write. Called once, before the gateway starts its threads.
    static void setUpApplicationLog(const ApplicationLogSettings& settings);

    // Ends the log: the library writes out what it holds. Called at the end of a run.
    static void shutDownLog();

private:
    QuorinGatewayApplicationLogger();

    static QuorinGatewayApplicationLogger& instance();
    static void write(lumetrix::Level level, const QString& message);
};
