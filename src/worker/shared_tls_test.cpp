#undef QT_NO_KEYWORDS // Qt's private header uses them

#include "worker/shared_tls.h"

#include "support/deadline.h"
#include "support/loopback.h"
#include "support/some_certificate.h"
#include "worker/tls_configuration.h"

#include <QEventLoop>
#include <QSslSocket>

#include <private/qsslsocket_p.h>

#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace quorin::test {
namespace {

// The gateway's end of a connection on which TLS has begun.
class Connection {
public:
    explicit Connection(const SharedTls& tls) {
        socket_.setSocketDescriptor(loopback_.takeDescriptor().release());
        tls.startServerEncryption(socket_);
    }

    [[nodiscard]] std::shared_ptr<QSslContext> context() {
        return QSslSocketPrivate::sslContext(&socket_);
    }

    // Lets both ends agree on their keys; false when they do not.
    [[nodiscard]] bool isEncrypted() {
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
    QEventLoop loop_; // before the sockets, which ask for one
    Loopback loopback_;
    QSslSocket socket_;
};

class SharedTlsTest : public testing::Test {
protected:
    static QSslConfiguration configuration() {
        return tlsConfiguration(someCertificate(), keyOfSomeCertificate());
    }
};

TEST_F(SharedTlsTest, connectionsShareOneContext) {
    SharedTls tls;
    tls.configure(configuration());
    Connection first(tls);
    Connection second(tls);
    ASSERT_NE(first.context(), nullptr);
    EXPECT_EQ(first.context(), second.context());
    EXPECT_TRUE(first.isEncrypted());
    EXPECT_TRUE(second.isEncrypted());
}

TEST_F(SharedTlsTest, aContextIsReplacedWhenItsTimeIsOver) {
    SharedTls tls(std::chrono::milliseconds(0));
    tls.configure(configuration());
    Connection first(tls);
    Connection second(tls);
    ASSERT_NE(first.context(), nullptr);
    EXPECT_NE(first.context(), second.context());
    EXPECT_TRUE(first.isEncrypted());
    EXPECT_TRUE(second.isEncrypted());
}

TEST_F(SharedTlsTest, withoutACertificateThereIsNoneAndHandshakesFail) {
    SharedTls tls;
    tls.configure(tlsConfiguration(QSslCertificate(), QSslKey()));
    Connection first(tls);
    Connection second(tls);
    EXPECT_FALSE(first.isEncrypted());
    EXPECT_FALSE(second.isEncrypted());
}

TEST_F(SharedTlsTest, threadsMayBeginAtTheSameTime) {
    SharedTls tls;
    tls.configure(configuration());
    std::array<bool, 4> isEncrypted{};
    std::array<std::thread, 4> threads;
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i] = std::thread([&tls, &isEncrypted, i] {
            for (int round = 0; round < 5; ++round) {
                isEncrypted[i] = Connection(tls).isEncrypted();
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
