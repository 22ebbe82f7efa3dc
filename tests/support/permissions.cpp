#include "support/permissions.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

bool canWriteInto(const QString& folder, const QStringList& prefix) {
    QFile probe(folder + u"/probe");
    bool isWritten = false;
    if (prefix.isEmpty()) {
        isWritten = probe.open(QIODevice::WriteOnly);
    } else {
        QProcess touch;
        touch.start(prefix.first(), prefix.mid(1) + QStringList{u"touch"_s, probe.fileName()});
        isWritten = touch.waitForFinished() && touch.exitCode() == 0;
    }
    probe.remove();
    return isWritten;
}

} // namespace

void forbidWriting(const QString& folder) {
    ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
}

void allowWriting(const QString& folder) {
    QFile::setPermissions(folder, QFile::permissions(folder) | QFile::WriteOwner);
}

std::optional<QStringList> prefixBoundByPermissions() {
    const QTemporaryDir folder;
    forbidWriting(folder.path());
    std::optional<QStringList> bound;
    for (const QStringList& prefix :
         {QStringList(),
          QStringList{u"setpriv"_s, u"--bounding-set=-dac_override,-dac_read_search"_s}}) {
        const bool isAvailable =
            prefix.isEmpty() || !QStandardPaths::findExecutable(prefix.first()).isEmpty();
        if (isAvailable && !canWriteInto(folder.path(), prefix)) {
            bound = prefix;
            break;
        }
    }
    allowWriting(folder.path());
    return bound;
}

} // namespace quorin::test
