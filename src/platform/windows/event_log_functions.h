#pragma once

#include "platform/event_log.h"
#include "platform/windows/system.h"

namespace quorin::platform {

// The Windows functions that the event log uses. Tests replace them to record their arguments and
// to simulate failures.
struct EventLogFunctions {
    decltype(&RegisterEventSourceW) open = &RegisterEventSourceW;
    decltype(&ReportEventW) report = &ReportEventW;
    decltype(&DeregisterEventSource) close = &DeregisterEventSource;
    decltype(&RegCreateKeyExW) createKey = &RegCreateKeyExW;
    decltype(&RegSetValueExW) setValue = &RegSetValueExW;
    decltype(&RegDeleteTreeW) deleteTree = &RegDeleteTreeW;
    decltype(&RegCloseKey) closeKey = &RegCloseKey;
};

// The functions of event_log.h, with the given functions of the system. An empty `source` discards
// the event.
void reportEventWith(const EventLogFunctions& system, const QString& source, EventKind kind,
                     const QString& text);
[[nodiscard]] std::optional<QString> registerEventSourceWith(const EventLogFunctions& system,
                                                             const QString& source,
                                                             const QString& messageFile);
[[nodiscard]] std::optional<QString> removeEventSourceWith(const EventLogFunctions& system,
                                                           const QString& source);

} // namespace quorin::platform
