#include "support/process_figures.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace quorin::test {

namespace {

// The number after `field` in the text of /proc/<pid>/status; 0 if the field is missing.
qint64 statusNumber(const QByteArray& status, const QByteArray& field) {
    const QByteArray label = "\n" + field + ":";
    const qsizetype place = status.indexOf(label);
    if (place < 0) {
        return 0;
    }
    const qsizetype begin = place + label.size();
    return status.mid(begin, status.indexOf('\n', begin) - begin)
        .simplified()
        .split(' ')
        .constFirst()
        .toLongLong();
}

} // namespace

const int kDescriptorsPerThread = 1;
const int kDescriptorsOpenedLate = 0;
const qint64 kMemoryPerThread = 0;

std::optional<ProcessFigures> processFigures(qint64 processId) {
    const QString folder = QStringLiteral("/proc/") + QString::number(processId);
    QFile file(folder + QStringLiteral("/status"));
    if (!file.open(QIODevice::ReadOnly)) {
        return std::nullopt;
    }
    const QByteArray status = file.readAll();
    ProcessFigures figures;
    figures.privateBytes = statusNumber(status, "RssAnon") * 1024;
    figures.threads = int(statusNumber(status, "Threads"));
    figures.descriptors = int(QDir(folder + QStringLiteral("/fd"))
                                  .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                                  .size());
    return figures;
}

std::string describeDescriptors(qint64 processId) {
    const QDir folder(QStringLiteral("/proc/") + QString::number(processId) +
                      QStringLiteral("/fd"));
    QString lines;
    for (const QFileInfo& descriptor :
         folder.entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)) {
        lines += descriptor.fileName() + QStringLiteral(" -> ") +
                 QFile::symLinkTarget(descriptor.filePath()) + u'\n';
    }
    return lines.toStdString();
}

} // namespace quorin::test
