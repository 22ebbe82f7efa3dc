#pragma once

#include <QString>

#include <optional>
#include <utility>

namespace quorin::platform {

enum class EventKind { Started, Stopped, StartFailed, CertificateMissing, CertificateExpires };

// Where administrators look for events of services: the application event log of Windows, the
// journal of systemd. Values can be copied. Functions are thread-safe.
class EventLog {
public:
    // The log for a program that was started by its command line. On Linux, writes to standard
    // error if the journal reads it, each line with the prefix that tells the journal its priority;
    // otherwise, and on Windows, discards all events.
    [[nodiscard]] static EventLog ofProgram();

    // The log for a service. `source` is the name of a registered event source. On Linux the same
    // as ofProgram().
    [[nodiscard]] static EventLog ofService(const QString& source);

    // Writes an event. `text` is a single line. Errors are ignored.
    void report(EventKind kind, const QString& text) const;

private:
    explicit EventLog(QString source) : source_(std::move(source)) {}

    QString source_; // empty: discards all events
};

// Registers the event source `source`, whose texts are in the program `messageFile`. Windows shows
// events of an unregistered source without their texts. Returns the error text on failure. Does
// nothing on Linux.
[[nodiscard]] std::optional<QString> registerEventSource(const QString& source,
                                                         const QString& messageFile);

// Removes the registration. Succeeds if there is none.
[[nodiscard]] std::optional<QString> removeEventSource(const QString& source);

} // namespace quorin::platform
