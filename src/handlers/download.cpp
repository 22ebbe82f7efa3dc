#include "handlers/download.h"

#include "config/gateway_settings.h"
#include "handlers/access_line.h"
#include "handlers/notification_lock.h"
#include "handlers/refusal.h"
#include "handlers/reply.h"
#include "handlers/request_context.h"
#include "http/header_names.h"
#include "http/response.h"
#include "log/log.h"
#include "platform/input_file.h"

#include <QFileInfo>
#include <QIODevice>
#include <QMimeDatabase>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

constexpr QStringView kServed = u"200";

QByteArray contentTypeOfFolder(const QString& path) {
    return QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchDefault).name().toUtf8();
}

// The same as mimeTypeForFile(), without opening the file again after its lock has been released.
QByteArray contentTypeOf(const QString& path, const QByteArray& content) {
    return QMimeDatabase().mimeTypeForFileNameAndData(path, content).name().toUtf8();
}

QByteArrayView view(std::string_view text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

// The header has no reason phrase and no other fields (docs/compatibility.md).
QByteArray streamHeader(qint64 size, const QByteArray& contentType) {
    QByteArray header("HTTP/1.1 200\r\n");
    header.append(view(http::kContentLength)).append(": ").append(QByteArray::number(size));
    header.append("\r\n").append(view(http::kContentType)).append(": ").append(contentType);
    return header.append("\r\n\r\n");
}

bool isExpired(const RequestContext& context) {
    const std::chrono::milliseconds allowed =
        std::chrono::seconds(GatewaySettings::instance().HTTPRequestTimeout);
    return context.requestStart.msecsTo(QDateTime::currentDateTimeUtc()) >= allowed.count();
}

[[noreturn]] void refuseUnreadable(RequestContext& context, const QString& reason) {
    refuse(context, http::Status::InternalServerError, reason);
}

void finish(RequestContext& context) {
    context.requestEnd = QDateTime::currentDateTime();
    log::debug([&context] { return accessLine(context, kServed); });
}

// A chunk, which may be a whole file, is written to the socket in pieces, so that the buffers of
// the socket and of TLS need no more memory than a piece. Smaller pieces slow down a single fast
// client, larger ones many clients (docs/performance.md).
constexpr qint64 kPieceSize = qint64{512} * 1024;

// Fills `piece` with the next bytes of `file`. If the file has been truncated since its size was
// sent, the rest is filled with zeros.
void readPiece(QIODevice& file, QByteArray& piece) {
    char* const bytes = piece.data(); // detaches: the socket may share the previous content
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

// Sends the next `size` bytes of `file` and returns 0, or the number of bytes not yet read from the
// file when kSendTimeout expires: for a slow client no more than one piece is kept in memory.
// `piece` is a buffer reused by all chunks.
qint64 sendChunk(RequestContext& context, QIODevice& file, qint64 size, QByteArray& piece) {
    QSslSocket& socket = *context.socket;
    const QDeadlineTimer deadline(kSendTimeout);
    waitUntilSent(socket, deadline); // the rest of the previous chunk
    while (size > 0 && !context.disconnected && unsentBytes(socket) == 0) {
        piece.resize(std::min(size, kPieceSize));
        readPiece(file, piece);
        size -= piece.size();
        sendPiece(socket, piece, deadline);
    }
    if (unsentBytes(socket) > 0) {
        piece = {}; // the socket has a copy of what is unsent
    }
    return size;
}

void sendBody(RequestContext& context, QIODevice& file, qint64 size) {
    const qint64 configured = GatewaySettings::instance().ThreadReadBufferSize;
    const qint64 chunkSize = configured > 0 ? std::min(configured, size) : size;
    QByteArray piece;
    qint64 due = 0;
    for (qint64 remaining = size; remaining > 0;) {
        if (context.disconnected) {
            failRequest(u"socket disconnected"_s);
        }
        if (isExpired(context)) {
            failRequest(u"requet expired"_s);
        }
        const qint64 chunk = std::min(remaining, chunkSize);
        due = sendChunk(context, file, due + chunk, piece);
        remaining -= chunk;
    }
}

struct LockedContent {
    QByteArray bytes;
    // Taken under the lock: another process may have replaced the file by a shorter one before.
    qint64 fileSize = 0;
};

// Reads the file under its lock. Refuses the request if that fails.
LockedContent readLocked(RequestContext& context, const QString& filePath,
                         const QFileInfo& fileInfo) {
    NotificationLock lock(fileInfo);
    const bool isLocked = lock.acquire([](int attempt) {
        log::debug([attempt] {
            return u"Failed to Lock (%1/%2)"_s.arg(attempt).arg(NotificationLock::kAttempts);
        });
    });
    if (!isLocked) {
        lock.logFailure();
        refuseUnreadable(context, u"failed to open " + filePath + u" for read (lock failed).");
    }
    std::unique_ptr<QIODevice> file = platform::openForReading(filePath);
    if (!file) {
        lock.unlockIfLocked();
        refuseUnreadable(context, u"failed to open " + filePath + u" for read.");
    }
    LockedContent content{.bytes = {}, .fileSize = file->size()};
    content.bytes = file->readAll();
    file.reset();
    lock.unlockIfLocked();
    return content;
}

} // namespace

void sendFile(RequestContext& context, const QFileInfo& fileInfo) {
    const QString filePath = fileInfo.filePath();
    const std::unique_ptr<QIODevice> file = platform::openForReading(filePath);
    if (!file) {
        refuseUnreadable(context, u"failed to open " + filePath + u" for read.");
    }
    // Not that of `fileInfo`: a publisher may have replaced the file since it was looked up.
    const qint64 size = file->size();
    writeIfConnected(*context.socket, streamHeader(size, contentTypeOfFolder(fileInfo.path())));
    waitUntilSent(*context.socket);
    context.responseStarted = true;
    sendBody(context, *file, size);
    finish(context);
}

void sendNotificationFile(RequestContext& context, const QFileInfo& fileInfo) {
    const QString filePath = fileInfo.filePath();
    log::debug([&filePath]() -> QString { return u"notification file " + filePath; });
    const auto [content, fileSize] = readLocked(context, filePath, fileInfo);
    log::debug([&filePath]() -> QString { return u"Close file. (" + filePath + u')'; });
    if (context.disconnected) {
        failRequest(u"socket disconnected"_s);
    }
    if (isExpired(context)) {
        failRequest(u"request expired"_s);
    }
    if (content.size() < fileSize) {
        refuseUnreadable(context, u"failed to read " + filePath + u" for read.");
    }
    http::Response response(http::Status::Ok);
    response.headers.set(http::kContentLength, std::to_string(content.size()));
    response.headers.set(http::kContentType, contentTypeOf(filePath, content).toStdString());
    response.appendBody({content.constData(), static_cast<std::size_t>(content.size())});
    writeSocket(*context.socket, serialized(response));
    context.responseStarted = true;
    finish(context);
}

} // namespace quorin
