#include "platform/socket_descriptor.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <optional>

namespace quorin::platform {
namespace {

// Stores the accepted connection as a descriptor.
class Acceptor : public QTcpServer {
public:
    std::optional<SocketDescriptor> accepted;

private:
    void incomingConnection(qintptr descriptor) override { accepted.emplace(descriptor); }
};

TEST(SocketDescriptorTest, ClosesUnreleasedDescriptor) {
    Acceptor acceptor;
    ASSERT_TRUE(acceptor.listen(QHostAddress::LocalHost));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, acceptor.serverPort());
    ASSERT_TRUE(client.waitForConnected(5000));
    ASSERT_TRUE(acceptor.waitForNewConnection(5000));
    ASSERT_TRUE(acceptor.accepted.has_value());

    acceptor.accepted.reset();
    EXPECT_TRUE(client.waitForDisconnected(5000));
}

TEST(SocketDescriptorTest, LeavesReleasedDescriptorOpen) {
    Acceptor acceptor;
    ASSERT_TRUE(acceptor.listen(QHostAddress::LocalHost));
    QTcpSocket client;
    client.connectToHost(QHostAddress::LocalHost, acceptor.serverPort());
    ASSERT_TRUE(client.waitForConnected(5000));
    ASSERT_TRUE(acceptor.waitForNewConnection(5000));
    ASSERT_TRUE(acceptor.accepted.has_value());

    QTcpSocket receiver;
    ASSERT_TRUE(receiver.setSocketDescriptor(acceptor.accepted->release()));
    acceptor.accepted.reset();
    receiver.write("still open");
    ASSERT_TRUE(receiver.waitForBytesWritten(5000));
    ASSERT_TRUE(client.waitForReadyRead(5000));
    EXPECT_EQ(client.readAll(), "still open");
}

} // namespace
} // namespace quorin::platform
