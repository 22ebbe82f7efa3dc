#include "handlers/reply.h"

#include "handlers/handler_fixture.h"
#include "http/response.h"
#include "support/deadline.h"
#include "support/raw_socket.h"
#include "support/some_certificate.h"

#include <QCoreApplication>
#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace quorin::test {
namespace {

TEST(MakeResponseTest, AddsConnectionCloseToClientErrors) {
    EXPECT_EQ(makeResponse(http::Status{400}),
              "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{404}),
              "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{405}),
              "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{499}), "HTTP/1.1 499 \r\nConnection: close\r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{200}), "HTTP/1.1 200 OK\r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{204}), "HTTP/1.1 204 No Content\r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{399}), "HTTP/1.1 399 \r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{500}), "HTTP/1.1 500 Internal Server Error\r\n\r\n");
    EXPECT_EQ(makeResponse(http::Status{503}), "HTTP/1.1 503 Service Unavailable\r\n\r\n");
}

TEST(MakeResponseTest, AppendsBodyUnchanged) {
    EXPECT_EQ(makeResponse(http::Status{200}, QByteArray("a\0b", 3)),
              QByteArray("HTTP/1.1 200 OK\r\n\r\na\0b", 22));
    EXPECT_EQ(makeResponse(http::Status{404}, "\u00fc"),
              "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n\u00fc");
}

TEST(SerializedTest, ReturnsBytesOfResponse) {
    http::Response response(http::Status::Ok);
    response.headers.set("B", "2");
    response.headers.set("A", "1");
    response.appendBody("body");
    EXPECT_EQ(serialized(response), "HTTP/1.1 200 OK\r\nA: 1\r\nB: 2\r\n\r\nbody");
}

class ReplyTest : public HandlerTest {
protected:
    QSslSocket& socket() { return *context_.socket; }

    // More than the system buffers for a client that does not read.
    static constexpr qsizetype kTooMuch = 32 * 1024 * 1024;
};

TEST_F(ReplyTest, ReturnsWhenAllBytesAreSent) {
    writeSocket(socket(), "bytes");
    EXPECT_EQ(unsentBytes(socket()), 0);
    replyStatus(socket(), http::Status::MethodNotAllowed);
    EXPECT_EQ(received(), "bytesHTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n");
}

TEST_F(ReplyTest, WriteFailsIfPeerDoesNotRead) {
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(failureOf([this] { writeSocket(socket(), QByteArray(kTooMuch, 'x'), 300ms); }),
              u"[End] Failed to write socket data."_s);
    EXPECT_GE(timer.elapsed(), 300);
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_GT(unsentBytes(socket()), 0);
    socket().abort();
}

TEST_F(ReplyTest, DeliversAllBytesToSlowPeer) {
    const QByteArray bytes(kTooMuch, 'x');
    socket().write(bytes);
    waitUntilSent(socket(), 100ms);
    EXPECT_GT(unsentBytes(socket()), 0);
    // Client and socket belong to this thread, so they take turns.
    QByteArray bytesRead;
    while (unsentBytes(socket()) > 0) {
        bytesRead += connection_->client().read(1);
        bytesRead += connection_->client().socket().readAll();
        waitUntilSent(socket(), 50ms);
    }
    bytesRead += received();
    EXPECT_TRUE(bytesRead == bytes) << bytesRead.size();
}

TEST_F(ReplyTest, WaitEndsAtDeadline) {
    socket().write(QByteArray(kTooMuch, 'x'));
    QElapsedTimer timer;
    timer.start();
    waitUntilSent(socket(), 300ms);
    EXPECT_GE(timer.elapsed(), 290); // poll() may time out a timer tick early
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_FALSE(context_.disconnected);
    socket().abort();
}

TEST_F(ReplyTest, WaitEndsWhenPeerDisconnects) {
    socket().write(QByteArray(kTooMuch, 'x'));
    connection_->client().abort();
    QElapsedTimer timer;
    timer.start();
    waitUntilSent(socket());
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_TRUE(context_.disconnected);
}

TEST_F(ReplyTest, WaitReturnsIfNothingIsUnsent) {
    QElapsedTimer timer;
    timer.start();
    waitUntilSent(socket());
    EXPECT_LT(timer.elapsed(), 10'000);
}

TEST_F(ReplyTest, SendsPieceWithoutBuffering) {
    sendPiece(socket(), "first ", kSendTimeout);
    sendPiece(socket(), "second", kSendTimeout);
    EXPECT_EQ(unsentBytes(socket()), 0);
    EXPECT_EQ(received(), "first second");
}

TEST_F(ReplyTest, BuffersRestOfPieceAtDeadline) {
    QByteArray bytes(kTooMuch, Qt::Uninitialized);
    for (qsizetype index = 0; index < kTooMuch; ++index) {
        bytes[index] = static_cast<char>(index * 31 + (index >> 8) + (index >> 16));
    }
    sendPiece(socket(), bytes, 100ms);
    EXPECT_GT(unsentBytes(socket()), 0);
    // Client and socket belong to this thread, so they take turns.
    QSslSocket& client = connection_->client().socket();
    QByteArray bytesRead;
    while (unsentBytes(socket()) > 0) {
        waitUntilSent(socket(), 50ms);
        client.waitForReadyRead(50);
        bytesRead += client.readAll();
    }
    bytesRead += received();
    EXPECT_TRUE(bytesRead == bytes) << bytesRead.size();
}

TEST_F(ReplyTest, ReadsWhatPeerSendsDuringPiece) {
    connection_->client().send("more");
    ASSERT_TRUE(waitUntil([this] { return unreadBytes(socket().socketDescriptor()) == 4; }));
    sendPiece(socket(), "piece", kSendTimeout);
    EXPECT_EQ(socket().readAll(), "more");
    EXPECT_EQ(received(), "piece");
}

TEST_F(ReplyTest, PieceEndsWhenPeerDisconnects) {
    connection_->client().abort();
    QElapsedTimer timer;
    timer.start();
    sendPiece(socket(), QByteArray(kTooMuch, 'x'), kSendTimeout);
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_TRUE(context_.disconnected);
}

// After a disconnect no bytes are left to send, so the write does not fail.
TEST_F(ReplyTest, WriteEndsWhenPeerDisconnects) {
    connection_->client().abort();
    QElapsedTimer timer;
    timer.start();
    writeSocket(socket(), QByteArray(kTooMuch, 'x'));
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_TRUE(context_.disconnected);
}

TEST_F(ReplyTest, WriteFailsOnUnconnectedSocket) {
    QSslSocket unconnected;
    EXPECT_EQ(failureOf([&] { writeSocket(unconnected, "x"); }),
              u"[End] Failed to write socket data."_s);
}

TEST_F(ReplyTest, UnconnectedSocketIsNotWritten) {
    static int warnings = 0;
    const auto previous = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString&) { ++warnings; });
    QSslSocket unconnected;
    writeIfConnected(unconnected, "x");
    qInstallMessageHandler(previous);
    EXPECT_EQ(warnings, 0);
}

TEST_F(ReplyTest, CountsUnsentBytesOfPlainSocket) {
    QTcpSocket plain;
    EXPECT_EQ(unsentBytes(plain), 0);
    ASSERT_TRUE(plain.setSocketDescriptor(Loopback().takeDescriptor().release()));
    plain.write("abc");
    EXPECT_EQ(unsentBytes(plain), 3);
}

TEST_F(ReplyTest, EncryptedBytesAreUnsent) {
    socket().setLocalCertificate(someCertificate());
    socket().setPrivateKey(keyOfSomeCertificate());
    socket().startServerEncryption();
    QSslSocket& client = connection_->client().socket();
    client.setPeerVerifyMode(QSslSocket::VerifyNone);
    client.startClientEncryption();
    ASSERT_TRUE(waitUntil([&] {
        QCoreApplication::processEvents();
        return socket().isEncrypted() && client.isEncrypted();
    })) << client.errorString().toStdString();
    socket().write(QByteArray(kTooMuch, 'x'));
    socket().flush();
    ASSERT_EQ(socket().bytesToWrite(), 0);
    EXPECT_GT(unsentBytes(socket()), 0);
    socket().abort();
}

} // namespace
} // namespace quorin::test
