#include "worker/download.h"

#include "config/gateway_settings.h"
#include "http/header_names.h"
#include "http/response.h"
#include "log/application_logger.h"
#include "worker/access_line.h"
#include "worker/notification_lock.h"
#include "worker/reply.h"
#include "worker/request_failure.h"
#include "worker/worker_context.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeDatabase>

#include <algorithm>
#include <chrono>
#include <cstring>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

using Logger = QuorinGatewayApplicationLogger;

constexpr QStringView kServed = u"200";

QByteArray contentTypeOf(const QString& path) {
    return QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchDefault).name().toUtf8();
}

QByteArrayView view(std::string_view text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

// No reason phrase, and no other header.
QByteArray streamHeader(qint64 size, const QByteArray& contentType) {
    QByteArray header("HTTP/1.1 200\r\n");
    header.append(view(http::kContentLength)).append(": ").append(QByteArray::number(size));
    header.append("\r\n").append(view(http::kContentType)).append(": ").append(contentType);
    return header.append("\r\n\r\n");
}

bool isExpired(const WorkerContext& worker) {
    const std::chrono::milliseconds allowed =
        std::chrono::seconds(GatewaySettings::instance().HTTPRequestTimeout);
    return worker.requestStart.msecsTo(QDateTime::currentDateTimeUtc()) >= allowed.count();
}

[[noreturn]] void refuseUnreadable(WorkerContext& worker, const QString& text) {
    replyStatus(*worker.socket, "500", {});
    failRequest(text);
}

void finish(WorkerContext& worker) {
    worker.requestEnd = QDateTime::currentDateTime();
    Logger::logDebug([&worker] { return accessLine(worker, kServed); });
}

// A chunk, which may be a whole file, goes in pieces through the buffers of the socket and of TLS,
// so that these need no more memory than a piece takes. Smaller pieces cost a fast client time,
// larger ones many clients (docs/performance.md).
constexpr qint64 kPieceSize = qint64{512} * 1024;

// Reads the next bytes of `file`, as many as `piece` is long. Behind the end of a file that has
// become shorter since its size was announced come zeros.
void readPiece(QFile& file, QByteArray& piece) {
    char* const bytes = piece.data(); // its own, though the socket may still share the last piece
    qint64 filled = 0;
    while (filled < piece.size()) {
        const qint64 count = file.read(bytes + filled, piece.size() - filled);
        if (count <= 0) {
            break;
        }
        filled += count;
    }
    std::memset(bytes + filled, 0, static_cast<std::size_t>(piece.size() - filled));
}

// Sends the next `size` bytes of `file`. Returns when the system has them all, or when the time of
// a chunk is over: then how many bytes are still to be read, for no more than a piece waits in
// memory for a slow client. `piece` is memory that chunks have in common.
qint64 sendChunk(WorkerContext& worker, QFile& file, qint64 size, QByteArray& piece) {
    QSslSocket& socket = *worker.socket;
    const QDeadlineTimer deadline(kSendTimeout);
    waitUntilSent(socket, deadline); // what the last chunk left
    while (size > 0 && !worker.disconnected && unsentBytes(socket) == 0) {
        piece.resize(std::min(size, kPieceSize));
        readPiece(file, piece);
        size -= piece.size();
        writeUnlessGone(socket, piece);
        waitUntilSent(socket, deadline);
    }
    return size;
}

void sendBody(WorkerContext& worker, QFile& file, qint64 size) {
    const qint64 configured = GatewaySettings::instance().ThreadReadBufferSize;
    const qint64 chunkSize = configured > 0 ? std::min(configured, size) : size;
    QByteArray piece;
    qint64 due = 0;
    for (qint64 remaining = size; remaining > 0;) {
        if (worker.disconnected) {
            failRequest(u"socket disconnected"_s);
        }
        if (isExpired(worker)) {
            failRequest(u"requet expired"_s);
        }
        const qint64 chunk = std::min(remaining, chunkSize);
        due = sendChunk(worker, file, due + chunk, piece);
        remaining -= chunk;
    }
}

struct LockedContent {
    QByteArray bytes;
    // The file's, asked under the lock: the file that was found before may have been replaced by a
    // shorter one while others held it.
    qint64 fileSize = 0;
};

// Reads the file under its lock. When that cannot be done a reply is sent and an exception tells
// why.
LockedContent readLocked(WorkerContext& worker, const QString& filePath,
                         const QFileInfo& fileInfo) {
    NotificationLock lock(fileInfo);
    bool locked = false;
    for (int attempt = 1; !locked && attempt <= NotificationLock::kAttempts; ++attempt) {
        locked = lock.attempt();
        if (!locked) {
            Logger::logDebug([attempt] {
                return u"Failed to Lock (%1/%2)"_s.arg(attempt).arg(NotificationLock::kAttempts);
            });
        }
    }
    if (!locked) {
        lock.logFailure();
        refuseUnreadable(worker, u"failed to open " + filePath + u" for read (lock failed).");
    }
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly)) {
        lock.unlockIfLocked();
        refuseUnreadable(worker, u"failed to open " + filePath + u" for read.");
    }
    LockedContent content{.bytes = {}, .fileSize = file.size()};
    content.bytes = file.readAll();
    file.close();
    lock.unlockIfLocked();
    return content;
}

} // namespace

void sendFile(WorkerContext& worker, const QFileInfo& fileInfo) {
    const QString filePath = fileInfo.filePath();
    QFile file(filePath);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        refuseUnreadable(worker, u"failed to open " + filePath + u" for read.");
    }
    const qint64 size = fileInfo.size();
    writeUnlessGone(*worker.socket, streamHeader(size, contentTypeOf(fileInfo.path())));
    waitUntilSent(*worker.socket);
    worker.responseStarted = true;
    sendBody(worker, file, size);
    finish(worker);
}

void sendNotificationFile(WorkerContext& worker, const QFileInfo& fileInfo) {
    const QString filePath = fileInfo.filePath();
    Logger::logDebug([&filePath]() -> QString { return u"notification file " + filePath; });
    const auto [content, fileSize] = readLocked(worker, filePath, fileInfo);
    Logger::logDebug([&filePath]() -> QString { return u"Close file. (" + filePath + u')'; });
    if (worker.disconnected) {
        failRequest(u"socket disconnected"_s);
    }
    if (isExpired(worker)) {
        failRequest(u"request expired"_s);
    }
    if (content.size() < fileSize) {
        refuseUnreadable(worker, u"failed to read " + filePath + u" for read.");
    }
    http::Response response(200);
    response.headers.set(http::kContentLength, std::to_string(content.size()));
    response.headers.set(http::kContentType, contentTypeOf(filePath).toStdString());
    response.appendBody({content.constData(), static_cast<std::size_t>(content.size())});
    writeSocket(*worker.socket, serialized(response));
    worker.responseStarted = true;
    finish(worker);
}

} // namespace quorin
