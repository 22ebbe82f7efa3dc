#pragma once

#include "stub_lumetrix/recorded_log.h"

#include <QString>
#include <QStringList>

namespace quorin::test {

// What the logging stub wrote into the file at `path`: a line a call.
[[nodiscard]] QStringList recordedCalls(const QString& path);
// Of these, the lines logged: the level's number, a blank, the message.
[[nodiscard]] QStringList loggedLines(const QString& path);

// What this process logs while the object lives, in the same form. Made and gone while no other
// thread logs.
class LogRecord {
public:
    [[nodiscard]] QStringList lines() const { return loggedLines(log_.path()); }

private:
    RecordedLog log_;
};

} // namespace quorin::test
