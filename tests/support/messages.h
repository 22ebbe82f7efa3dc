#pragma once

#include <QByteArray>

// HTTP messages that the end-to-end tests send and expect, byte for byte.
namespace quorin::test {

// Replies without a body. A request refused with an explicit status gets kReply500 after it.
inline const QByteArray kReply204 = "HTTP/1.1 204 No Content\r\n\r\n";
inline const QByteArray kReply400 = "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n";
inline const QByteArray kReply404 = "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n";
inline const QByteArray kReply405 = "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n";
inline const QByteArray kReply500 = "HTTP/1.1 500 Internal Server Error\r\n\r\n";
inline const QByteArray kReply503 = "HTTP/1.1 503 Service Unavailable\r\n\r\n";

// Returns the header of a streamed file of `size` bytes.
[[nodiscard]] QByteArray streamHeader(qsizetype size);

// Returns the reply to a download that is streamed.
[[nodiscard]] QByteArray streamedReply(const QByteArray& content);

// Returns the reply to a download that is sent as one message: a notification file or JSON.
[[nodiscard]] QByteArray wholeReply(const QByteArray& content,
                                    const QByteArray& type = "application/json");

// Returns a DELETE request for `target` with a notification reset date.
[[nodiscard]] QByteArray resetRequestFor(const QByteArray& target, const QByteArray& date);

} // namespace quorin::test
