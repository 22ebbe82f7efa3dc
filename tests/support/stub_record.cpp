#include "support/stub_record.h"

#include <QFile>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

// Reverses the stub's escaping.
QString unescaped(const QString& field) {
    QString text;
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field.at(i) != u'\\') {
            text += field.at(i);
            continue;
        }
        const QChar letter = field.at(++i);
        text += letter == u'n' ? QChar(u'\n') : letter == u't' ? QChar(u'\t') : letter;
    }
    return text;
}

} // namespace

QStringList recordedCalls(const QString& path) {
    QFile file(path);
    const QByteArray record = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    QStringList lines = QString::fromUtf8(record).split(u'\n');
    lines.removeLast(); // after the last line feed
    return lines;
}

QStringList loggedLines(const QString& path) {
    const QString call = u"log\thandle\tGW\t"_s;
    QStringList lines;
    for (const QString& line : recordedCalls(path)) {
        if (line.startsWith(call)) {
            lines.append(unescaped(line.mid(call.size()).replace(1, 1, u" "_s)));
        }
    }
    return lines;
}

} // namespace quorin::test
