#include "worker/unread_bytes.h"

#include "handlers/handler_fixture.h"
#include "support/deadline.h"
#include "support/raw_socket.h"

namespace quorin::test {
namespace {

class UnreadBytesTest : public HandlerTest {
protected:
    // Sends `size` bytes and waits until all have arrived at the socket.
    void fill(qsizetype size) {
        connection_->client().send(QByteArray(size, 'x'));
        ASSERT_TRUE(waitUntil([&] { return unreadBytes(socket().socketDescriptor()) == size; }));
    }

    QSslSocket& socket() { return *context_.socket; }
};

TEST_F(UnreadBytesTest, DiscardsBytesThatHaveArrived) {
    fill(10'000);
    discardUnread(socket(), 1'000'000);
    EXPECT_EQ(socket().bytesAvailable(), 0);
    EXPECT_EQ(unreadBytes(socket().socketDescriptor()), 0);
    EXPECT_EQ(socket().state(), QAbstractSocket::ConnectedState);
}

TEST_F(UnreadBytesTest, StopsAtLimit) {
    constexpr qint64 buffer = 1'000;
    socket().setReadBufferSize(buffer);
    fill(10'000);
    discardUnread(socket(), 3'500);
    const qint64 left = socket().bytesAvailable() + unreadBytes(socket().socketDescriptor());
    EXPECT_LE(left, 10'000 - 3'500);
    EXPECT_GE(left, 10'000 - 3'500 - buffer);
}

} // namespace
} // namespace quorin::test
