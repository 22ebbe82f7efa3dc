#include "platform/event_log.h"

#include "platform/windows/event_log_functions.h"

#include <event_messages.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {

namespace {

constexpr QStringView kSources = u"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\";

struct Event {
    WORD type;
    DWORD message;
};

Event eventOf(EventKind kind) {
    switch (kind) {
    case EventKind::Started:
        return {EVENTLOG_INFORMATION_TYPE, QUORIN_EVENT_STARTED};
    case EventKind::Stopped:
        return {EVENTLOG_INFORMATION_TYPE, QUORIN_EVENT_STOPPED};
    case EventKind::CertificateMissing:
        return {EVENTLOG_ERROR_TYPE, QUORIN_EVENT_CERTIFICATE_MISSING};
    case EventKind::CertificateExpires:
        return {EVENTLOG_WARNING_TYPE, QUORIN_EVENT_CERTIFICATE_EXPIRES};
    case EventKind::StartFailed:
        break;
    }
    return {EVENTLOG_ERROR_TYPE, QUORIN_EVENT_START_FAILED};
}

QString keyOf(const QString& source) {
    return kSources + source;
}

LSTATUS setSourceValues(const EventLogFunctions& system, HKEY key, const QString& messageFile) {
    const DWORD types = EVENTLOG_ERROR_TYPE | EVENTLOG_WARNING_TYPE | EVENTLOG_INFORMATION_TYPE;
    const auto size = static_cast<DWORD>((messageFile.size() + 1) * qsizetype{sizeof(wchar_t)});
    const LSTATUS status = system.setValue(key, L"EventMessageFile", 0, REG_SZ,
                                           reinterpret_cast<const BYTE*>(wide(messageFile)), size);
    return status != ERROR_SUCCESS
               ? status
               : system.setValue(key, L"TypesSupported", 0, REG_DWORD,
                                 reinterpret_cast<const BYTE*>(&types), sizeof(types));
}

} // namespace

void reportEventWith(const EventLogFunctions& system, const QString& source, EventKind kind,
                     const QString& text) {
    if (source.isEmpty()) {
        return;
    }
    HANDLE const log = system.open(nullptr, wide(source));
    if (log == nullptr) {
        return;
    }
    const auto [type, message] = eventOf(kind);
    const wchar_t* texts = wide(text);
    system.report(log, type, 0, message, nullptr, 1, 0, &texts, nullptr);
    system.close(log);
}

std::optional<QString> registerEventSourceWith(const EventLogFunctions& system,
                                               const QString& source, const QString& messageFile) {
    HKEY key = nullptr;
    LSTATUS status = system.createKey(HKEY_LOCAL_MACHINE, wide(keyOf(source)), 0, nullptr, 0,
                                      KEY_SET_VALUE, nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS) {
        status = setSourceValues(system, key, messageFile);
        system.closeKey(key);
    }
    return status == ERROR_SUCCESS ? std::nullopt
                                   : std::optional(qt_error_string(static_cast<int>(status)));
}

std::optional<QString> removeEventSourceWith(const EventLogFunctions& system,
                                             const QString& source) {
    const LSTATUS status = system.deleteTree(HKEY_LOCAL_MACHINE, wide(keyOf(source)));
    return status == ERROR_SUCCESS || status == ERROR_FILE_NOT_FOUND
               ? std::nullopt
               : std::optional(qt_error_string(static_cast<int>(status)));
}

EventLog EventLog::ofProgram() {
    return EventLog(QString());
}

EventLog EventLog::ofService(const QString& source) {
    return EventLog(source);
}

void EventLog::report(EventKind kind, const QString& text) const {
    reportEventWith({}, source_, kind, text);
}

std::optional<QString> registerEventSource(const QString& source, const QString& messageFile) {
    return registerEventSourceWith({}, source, messageFile);
}

std::optional<QString> removeEventSource(const QString& source) {
    return removeEventSourceWith({}, source);
}

} // namespace quorin::platform
