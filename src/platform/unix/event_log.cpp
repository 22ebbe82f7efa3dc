#include "platform/event_log.h"

#include <QByteArray>

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {

namespace {

// The priorities of syslog(3). The journal takes them from the prefix of a line.
int priorityOf(EventKind kind) {
    switch (kind) {
    case EventKind::Started:
    case EventKind::Stopped:
        return 6; // informational
    case EventKind::CertificateExpires:
        return 4; // warning
    case EventKind::StartFailed:
    case EventKind::CertificateMissing:
        break;
    }
    return 3; // error
}

// systemd sets the variable to the device and inode of the stream that the journal reads. A child
// process whose standard error is something else inherits the variable.
bool isReadByJournal(int descriptor) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        return false;
    }
    return qgetenv("JOURNAL_STREAM") == QByteArray::number(quint64{status.st_dev}) + ':' +
                                            QByteArray::number(quint64{status.st_ino});
}

} // namespace

EventLog EventLog::ofProgram() {
    return EventLog(isReadByJournal(STDERR_FILENO) ? u"journal"_s : QString());
}

EventLog EventLog::ofService(const QString& /*source*/) {
    return ofProgram();
}

void EventLog::report(EventKind kind, const QString& text) const {
    if (!source_.isEmpty()) {
        std::fprintf(stderr, "<%d>%s\n", priorityOf(kind), text.toUtf8().constData());
    }
}

std::optional<QString> registerEventSource(const QString& /*source*/,
                                           const QString& /*messageFile*/) {
    return std::nullopt;
}

std::optional<QString> removeEventSource(const QString& /*source*/) {
    return std::nullopt;
}

} // namespace quorin::platform
