#pragma once

#include "stub_lumetrix/recorded_log.h"

#include <QString>
#include <QStringList>

namespace quorin::test {

// Returns the logging stub's record in the file at `path`: one line per call.
[[nodiscard]] QStringList recordedCalls(const QString& path);
// Returns the logged lines of the record: the level's number, a space, the message.
[[nodiscard]] QStringList loggedLines(const QString& path);

// Records what this process logs during the object's lifetime. No other thread may log while the
// object is created or destroyed.
class LogRecord {
public:
    // In the form of loggedLines().
    [[nodiscard]] QStringList lines() const { return loggedLines(log_.path()); }

private:
    RecordedLog log_;
};

} // namespace quorin::test
