#pragma once

#include "log/application_logger.h"

#include <QString>

#include <concepts>
#include <type_traits>
#include <utility>

// Functions that write a message to the gateway's log. Thread-safe; they do not throw except
// std::bad_alloc.
namespace quorin::log {

inline void debug(const QString& message) {
    QuorinGatewayApplicationLogger::logDebug(message);
}

inline void info(const QString& message) {
    QuorinGatewayApplicationLogger::logInfo(message);
}

inline void warn(const QString& message) {
    QuorinGatewayApplicationLogger::logWarn(message);
}

inline void error(const QString& message) {
    QuorinGatewayApplicationLogger::logError(message);
}

// Writes the message that `build` returns. Calls `build` only if the logging library is loaded:
//
//     log::debug([&]() -> QString { return u"Target file : " + name; });
template<std::invocable MessageBuilder>
requires std::same_as<std::invoke_result_t<MessageBuilder>, QString>
void debug(MessageBuilder&& build) {
    QuorinGatewayApplicationLogger::logDebug(std::forward<MessageBuilder>(build));
}

} // namespace quorin::log
