#include "support/messages.h"

#include <QStringBuilder>

namespace quorin::test {

QByteArray streamHeader(qsizetype size) {
    return "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(size) +
           "\r\nContent-Type: inode/directory\r\n\r\n";
}

QByteArray streamedReply(const QByteArray& content) {
    return streamHeader(content.size()) + content;
}

QByteArray wholeReply(const QByteArray& content, const QByteArray& type) {
    return "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(content.size()) +
           "\r\nContent-Type: " + type + "\r\n\r\n" + content;
}

QByteArray resetRequestFor(const QByteArray& target, const QByteArray& date) {
    return "DELETE " + target + " HTTP/1.1\r\nX-Quorin-Notification-Reset-Date: " + date +
           "\r\n\r\n";
}

} // namespace quorin::test
