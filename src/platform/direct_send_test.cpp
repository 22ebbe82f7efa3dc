#include "platform/direct_send.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <thread>

using namespace std::chrono_literals;

namespace quorin::platform {
namespace {

class SendDirectlyTest : public testing::Test {
protected:
    SendDirectlyTest() {
        EXPECT_TRUE(server_.listen(QHostAddress::LocalHost));
        peer_.connectToHost(QHostAddress::LocalHost, server_.serverPort());
        EXPECT_TRUE(peer_.waitForConnected(kTimeoutMs));
        EXPECT_TRUE(server_.waitForNewConnection(kTimeoutMs));
        socket_.reset(server_.nextPendingConnection());
    }

    qint64 send(const QByteArray& bytes, const QDeadlineTimer& deadline) {
        return sendDirectly(socket_->socketDescriptor(), bytes, deadline);
    }

    // kTooMuch bytes, in which no two sections of some length are the same.
    static QByteArray tooMuch() {
        QByteArray bytes(kTooMuch, Qt::Uninitialized);
        for (qsizetype index = 0; index < kTooMuch; ++index) {
            bytes[index] = static_cast<char>(index * 31 + (index >> 8) + (index >> 16));
        }
        return bytes;
    }

    // Returns the next `count` bytes that the peer receives, or fewer if they do not arrive.
    QByteArray readByPeer(qsizetype count) {
        while (peer_.bytesAvailable() < count && peer_.waitForReadyRead(kTimeoutMs)) {
        }
        return peer_.read(count);
    }

    // Sends kTooMuch bytes and expects this to end long before its deadline.
    void expectEarlyEnd() {
        QElapsedTimer timer;
        timer.start();
        EXPECT_LT(send(QByteArray(kTooMuch, 'x'), QDeadlineTimer(kTimeout)), kTooMuch);
        EXPECT_LT(timer.elapsed(), 20'000);
    }

    static constexpr std::chrono::milliseconds kTimeout{60'000};
    static constexpr int kTimeoutMs = static_cast<int>(kTimeout.count());
    // More than the system buffers for a peer that does not read.
    static constexpr qsizetype kTooMuch = 32 * 1024 * 1024;

    QTcpServer server_;
    QTcpSocket peer_;
    std::unique_ptr<QTcpSocket> socket_;
};

TEST_F(SendDirectlyTest, SendsAllBytes) {
    const QByteArray bytes("a\0b", 3);
    EXPECT_EQ(send(bytes, QDeadlineTimer(kTimeout)), 3);
    EXPECT_EQ(readByPeer(3), bytes);
}

TEST_F(SendDirectlyTest, SendsAllBytesToSlowReader) {
    QByteArray received;
    std::jthread reader([&received, port = server_.serverPort()] {
        QTcpSocket slow;
        slow.setReadBufferSize(65536);
        slow.connectToHost(QHostAddress::LocalHost, port);
        while (received.size() < kTooMuch && slow.waitForReadyRead(kTimeoutMs)) {
            received += slow.readAll();
        }
    });
    ASSERT_TRUE(server_.waitForNewConnection(kTimeoutMs));
    socket_.reset(server_.nextPendingConnection());
    const QByteArray bytes = tooMuch();
    EXPECT_EQ(send(bytes, QDeadlineTimer(kTimeout)), kTooMuch);
    reader.join();
    EXPECT_TRUE(received == bytes) << received.size();
}

TEST_F(SendDirectlyTest, ReturnsSentBytesAtDeadline) {
    const QByteArray bytes = tooMuch();
    QElapsedTimer timer;
    timer.start();
    const qint64 sent = send(bytes, QDeadlineTimer(300ms));
    EXPECT_GE(timer.elapsed(), 290); // the system may end its wait a timer tick early
    EXPECT_LT(sent, kTooMuch);
    EXPECT_TRUE(readByPeer(sent) == bytes.first(sent));
    EXPECT_EQ(peer_.bytesAvailable(), 0);
}

TEST_F(SendDirectlyTest, SendsNothingAfterDeadline) {
    EXPECT_EQ(send("bytes", QDeadlineTimer(0)), 0);
}

TEST_F(SendDirectlyTest, EndsWhenPeerSends) {
    peer_.write("from peer");
    ASSERT_TRUE(peer_.waitForBytesWritten(kTimeoutMs));
    expectEarlyEnd();
    ASSERT_TRUE(socket_->waitForReadyRead(kTimeoutMs));
    EXPECT_EQ(socket_->readAll(), "from peer");
}

TEST_F(SendDirectlyTest, EndsWhenPeerDisconnects) {
    peer_.disconnectFromHost();
    expectEarlyEnd();
    EXPECT_TRUE(socket_->waitForDisconnected(kTimeoutMs));
}

// The peer has not read everything, so the system resets the connection.
TEST_F(SendDirectlyTest, EndsWhenPeerResetsConnection) {
    EXPECT_LT(send(QByteArray(kTooMuch, 'x'), QDeadlineTimer(100ms)), kTooMuch);
    peer_.abort();
    expectEarlyEnd();
}

} // namespace
} // namespace quorin::platform
