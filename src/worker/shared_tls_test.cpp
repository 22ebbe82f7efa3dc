#include "worker/shared_tls.h"

#include "support/deadline.h"
#include "support/loopback.h"
#include "support/some_certificate.h"
#include "worker/tls_configuration.h"

#include <QEventLoop>
#include <QSslSocket>

#define emit // a keyword of Qt that its private header uses
#include <private/qsslsocket_p.h>
#undef emit

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace quorin::test {
namespace {

// A connection whose server end has started TLS.
class Connection {
public:
    explicit Connection(const SharedTls& tls) {
        socket_.setSocketDescriptor(loopback_.takeDescriptor().release());
        tls.startServerEncryption(socket_);
    }

    [[nodiscard]] std::shared_ptr<QSslContext> context() {
        return QSslSocketPrivate::sslContext(&socket_);
    }

    // Returns the certificates that the client has received.
    [[nodiscard]] QList<QSslCertificate> receivedChain() {
        return loopback_.client().socket().peerCertificateChain();
    }

    // Completes the handshake. Returns false if it fails.
    [[nodiscard]] bool completeHandshake() {
        QSslSocket& client = loopback_.client().socket();
        client.setPeerVerifyMode(QSslSocket::VerifyNone);
        client.startClientEncryption();
        EXPECT_TRUE(waitUntil([&] {
            loop_.processEvents();
            return client.isEncrypted() || client.state() == QAbstractSocket::UnconnectedState;
        }));
        return client.isEncrypted();
    }

private:
    QEventLoop loop_; // must exist before the sockets
    Loopback loopback_;
    QSslSocket socket_;
};

class SharedTlsTest : public testing::Test {
protected:
    static QSslConfiguration configuration() {
        return tlsConfiguration(someCertificate(), keyOfSomeCertificate());
    }
};

TEST_F(SharedTlsTest, ConnectionsShareOneContext) {
    SharedTls tls;
    tls.configure(configuration());
    Connection first(tls);
    Connection second(tls);
    ASSERT_NE(first.context(), nullptr);
    EXPECT_EQ(first.context(), second.context());
    EXPECT_TRUE(first.completeHandshake());
    EXPECT_TRUE(second.completeHandshake());
}

TEST_F(SharedTlsTest, ReplacesExpiredContext) {
    SharedTls tls(std::chrono::milliseconds(0));
    tls.configure(configuration());
    Connection first(tls);
    Connection second(tls);
    ASSERT_NE(first.context(), nullptr);
    EXPECT_NE(first.context(), second.context());
    EXPECT_TRUE(first.completeHandshake());
    EXPECT_TRUE(second.completeHandshake());
}

TEST_F(SharedTlsTest, SendsIntermediates) {
    SharedTls tls;
    // OpenSSL sends any certificate as an intermediate one.
    tls.configure(tlsConfiguration(someCertificate(), keyOfSomeCertificate(), {someCertificate()}));
    Connection connection(tls);
    ASSERT_TRUE(connection.completeHandshake());
    EXPECT_EQ(connection.receivedChain(),
              (QList<QSslCertificate>{someCertificate(), someCertificate()}));
}

TEST_F(SharedTlsTest, SendsOnlyCertificateByDefault) {
    SharedTls tls;
    tls.configure(configuration());
    Connection connection(tls);
    ASSERT_TRUE(connection.completeHandshake());
    EXPECT_EQ(connection.receivedChain(), QList<QSslCertificate>{someCertificate()});
}

TEST_F(SharedTlsTest, HandshakeFailsWithoutCertificate) {
    SharedTls tls;
    tls.configure(tlsConfiguration(QSslCertificate(), QSslKey()));
    Connection first(tls);
    Connection second(tls);
    EXPECT_FALSE(first.completeHandshake());
    EXPECT_FALSE(second.completeHandshake());
}

TEST_F(SharedTlsTest, ThreadsStartTlsConcurrently) {
    SharedTls tls;
    tls.configure(configuration());
    std::array<bool, 4> isEncrypted{};
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&tls, &isEncrypted, i] {
            for (int round = 0; round < 5; ++round) {
                isEncrypted[i] = Connection(tls).completeHandshake();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(isEncrypted, (std::array<bool, 4>{true, true, true, true}));
}

} // namespace
} // namespace quorin::test
