#include "server/tcp_server.h"

#include "config/gateway_settings.h"
#include "handlers/handler_fixture.h"
#include "server/polling.h"
#include "support/client.h"
#include "support/deadline.h"
#include "support/descriptor_limit.h"
#include "support/messages.h"

#include <QCoreApplication>
#include <QFile>
#include <QNetworkProxy>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

// Directs all connections to a proxy that does not exist, as the settings of a system may do.
class ProxyForAll final : public QNetworkProxyFactory {
public:
    QList<QNetworkProxy> queryProxy(const QNetworkProxyQuery& /*query*/) override {
        return {QNetworkProxy(QNetworkProxy::Socks5Proxy, u"127.0.0.1"_s, 9)};
    }
};

class TcpServerTest : public testing::Test {
protected:
    TcpServerTest() {
        GatewaySettings& settings = GatewaySettings::instance();
        settings = {};
        settings.MaxUserSession = 2;
        settings.ConnectionTimeout = 30;
        settings.HTTPRequestTimeout = 600;
        settings.IsMadeClientRequestWaited = true;
        data_.write(u"root/a"_s, "content");
        qputenv("TMPDIR", pipes_.path().toUtf8()); // no gateway of this machine uses this pipe
    }
    ~TcpServerTest() override {
        QThreadPool::globalInstance()->waitForDone(); // workers log and read settings
        GatewaySettings::instance() = {};
        restoreTemporaryFolder();
    }

    void restoreTemporaryFolder() const {
        if (temporaryFolder_.isNull()) {
            qunsetenv("TMPDIR");
        } else {
            qputenv("TMPDIR", temporaryFolder_);
        }
    }

    LogRecord log_;
    DataFolder data_;
    const QByteArray temporaryFolder_ = qgetenv("TMPDIR");
    const QTemporaryDir pipes_;
};

TEST_F(TcpServerTest, AcceptsAfterFailedConnection) {
    TcpServer server(QCoreApplication::instance(), data_.path(u"root"_s));
    ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost), 0));
    server.pauseAccepting(); // as QTcpServer does before it emits the signal
    Q_EMIT server.acceptError(QAbstractSocket::NetworkError);

    Client client(server.serverPort());
    client.send(get("/a"));
    EXPECT_TRUE(waitUntil([&] {
        QCoreApplication::processEvents();
        return client.socket().bytesAvailable() > 0;
    }));
    EXPECT_EQ(client.readToEnd(),
              "HTTP/1.1 200\r\nContent-Length: 7\r\nContent-Type: inode/directory\r\n\r\ncontent");
    EXPECT_EQ(log_.lines().filter(u"5 "_s).size(), 1);
    EXPECT_TRUE(log_.lines().filter(u"5 "_s).constFirst().startsWith(
        u"5 [End] a connection could not be accepted: "));
}

TEST_F(TcpServerTest, DoesNotAcceptAfterCloseDuringPause) {
    TcpServer server(QCoreApplication::instance(), data_.path(u"root"_s));
    ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost), 0));
    server.pauseAccepting();
    Q_EMIT server.acceptError(QAbstractSocket::NetworkError);
    server.close();
    bool isLater = false; // than the end of the pause
    QTimer::singleShot(std::chrono::ceil<std::chrono::milliseconds>(3 * kIdlePoll),
                       Qt::PreciseTimer, &server, [&isLater] { isLater = true; });
    EXPECT_TRUE(waitUntil([&isLater] {
        QCoreApplication::processEvents();
        return isLater;
    }));
    EXPECT_FALSE(server.isListening());
}

TEST_F(TcpServerTest, AcceptsAfterExceptionOfLog) {
    GatewaySettings::instance().IsMadeClientRequestWaited = false;
    GatewaySettings::instance().MaxUserSession = 0;
    TcpServer server(QCoreApplication::instance(), data_.path(u"root"_s));
    ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost), 0));
    for (const char* const text : {"too many tcp connection", "no such line"}) {
        qputenv("QUORIN_STUB_THROWS", text);
        Client client(server.serverPort());
        client.send(get("/a"));
        EXPECT_TRUE(waitUntil([&client] {
            QCoreApplication::processEvents();
            return client.socket().bytesAvailable() > 0;
        }));
        EXPECT_EQ(client.read(kReply503.size()), kReply503);
    }
    qunsetenv("QUORIN_STUB_THROWS");
    EXPECT_EQ(log_.lines().filter(u"5 "_s),
              QStringList(u"5 [End] too many tcp connection arrived MaxUserSession:0"_s));
}

TEST_F(TcpServerTest, DoesNotListenThroughProxy) {
    QNetworkProxyFactory::setApplicationProxyFactory(new ProxyForAll); // Qt deletes it
    TcpServer server(QCoreApplication::instance(), data_.path(u"root"_s));
    const bool isListening = server.listen(QHostAddress(QHostAddress::AnyIPv4), 0);
    QNetworkProxyFactory::setApplicationProxyFactory(nullptr);
    ASSERT_TRUE(isListening) << server.errorString().toStdString();
    EXPECT_TRUE(Client(server.serverPort()).isConnected());
}

TEST_F(TcpServerTest, IgnoresMissingController) {
    TcpServer server(QCoreApplication::instance(), data_.path(u"root"_s));
    server.LocalServerNewConnection();
    EXPECT_EQ(log_.lines().filter(u"quit"_s), QStringList());
}

// Nothing accepts here: the event loop does not run.
TEST_F(TcpServerTest, LetsManyConnectionsWaitInSystem) {
    TcpServer server(QCoreApplication::instance(), data_.path(u"root"_s));
    ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost), 0));
    std::vector<std::unique_ptr<QTcpSocket>> clients;
    for (int i = 0; i < 250; ++i) {
        clients.push_back(std::make_unique<QTcpSocket>());
        clients.back()->connectToHost(QHostAddress::LocalHost, server.serverPort());
        ASSERT_TRUE(clients.back()->waitForConnected(5000)) << "client " << i;
    }
}

TEST_F(TcpServerTest, AcceptsWhileHostHasManyFiles) {
    const DescriptorLimit limit(256); // where the system sets one
    GatewaySettings::instance().MaxUserSession = 20;
    TcpServer server(QCoreApplication::instance(), data_.path(u"root"_s));
    ASSERT_TRUE(server.listen(QHostAddress(QHostAddress::LocalHost), 0));
    std::vector<std::unique_ptr<QFile>> files;
    for (int i = 0; i < 180; ++i) {
        files.push_back(std::make_unique<QFile>(data_.path(u"root/a"_s)));
        ASSERT_TRUE(files.back()->open(QIODevice::ReadOnly));
    }
    for (int i = 0; i < 6; ++i) {
        Client client(server.serverPort());
        client.send(get("/a"));
        ASSERT_TRUE(waitUntil([&] {
            QCoreApplication::processEvents();
            return client.socket().bytesAvailable() > 0;
        })) << "client "
            << i;
        EXPECT_TRUE(client.readToEnd().endsWith("content"));
    }
}

} // namespace
} // namespace quorin::test
