// Clients that send TLS 1.3 key updates: records that keep a connection busy and carry no data.
// Uses OpenSSL itself because Qt sends no key updates.

#include "handlers/handler_fixture.h"
#include "support/deadline.h"
#include "support/raw_socket.h"
#include "support/some_certificate.h"
#include "worker/tls_configuration.h"
#include "worker/worker.h"

#include <openssl/ssl.h>

#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

// More than the system and Qt take in before the worker reads them.
constexpr int kKeyUpdates = 100'000;
constexpr int kSocketBuffer = 64 * 1024;

class KeyUpdateTest : public testing::Test {
protected:
    KeyUpdateTest() {
        GatewaySettings& settings = GatewaySettings::instance();
        settings = {};
        settings.HttpsEnabled = true;
        serverContext_->tls.configure(tlsConfiguration(someCertificate(), keyOfSomeCertificate()));
    }
    ~KeyUpdateTest() override {
        if (thread_.joinable()) {
            connection_.client().abort();
            thread_.join();
        }
        GatewaySettings::instance() = {};
    }

    // Runs a worker for the connection and completes the client's handshake.
    void connect() {
        platform::SocketDescriptor descriptor = connection_.takeDescriptor();
        setReceiveBuffer(descriptor.get(), kSocketBuffer);
        thread_ = std::thread([this, worker = std::make_unique<Worker>(std::move(descriptor),
                                                                       serverContext_)]() mutable {
            worker->run();
            worker.reset();
        });
        setSendBuffer(client_, kSocketBuffer);
        ASSERT_TRUE(makeBlocking(client_));
        ASSERT_EQ(SSL_set_fd(tls_.get(), int(client_)), 1);
        ASSERT_EQ(SSL_connect(tls_.get()), 1);
        ASSERT_EQ(SSL_version(tls_.get()), TLS1_3_VERSION);
    }

    // The records of `request`, unless it is empty, and of `count` key updates.
    QByteArray records(const QByteArray& request, int count) {
        BIO* const memory = BIO_new(BIO_s_mem());
        SSL_set0_wbio(tls_.get(), memory);
        if (!request.isEmpty()) {
            EXPECT_EQ(SSL_write(tls_.get(), request.data(), int(request.size())), request.size());
        }
        for (int i = 0; i < count; ++i) {
            EXPECT_EQ(SSL_key_update(tls_.get(), SSL_KEY_UPDATE_NOT_REQUESTED), 1);
            EXPECT_EQ(SSL_do_handshake(tls_.get()), 1);
        }
        char* bytes = nullptr;
        const long size = BIO_get_mem_data(memory, &bytes);
        return QByteArray(bytes, size);
    }

    // Returns false if the worker closed the connection before it had taken all `bytes`.
    [[nodiscard]] bool sendAll(const QByteArray& bytes) const {
        qsizetype sent = 0;
        while (sent < bytes.size()) {
            const qint64 count = sendSome(client_, QByteArrayView(bytes).sliced(sent));
            if (count < 0) {
                return false;
            }
            sent += count;
        }
        return true;
    }

    LogRecord log_;
    DataFolder data_;
    std::shared_ptr<ServerContext> serverContext_ = std::make_shared<ServerContext>();
    Loopback connection_;
    qintptr client_ = connection_.client().socket().socketDescriptor();
    std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context_{SSL_CTX_new(TLS_client_method()),
                                                               &SSL_CTX_free};
    std::unique_ptr<SSL, decltype(&SSL_free)> tls_{SSL_new(context_.get()), &SSL_free};
    std::thread thread_;
};

TEST_F(KeyUpdateTest, DoesNotDelayEndAfterRequest) {
    GatewaySettings::instance().ConnectionTimeout = 600;
    connect();
    EXPECT_FALSE(sendAll(records(get("/api/WebApiCommScheme"), kKeyUpdates)));
    thread_.join();
}

TEST_F(KeyUpdateTest, DoesNotExtendConnectionTimeout) {
    GatewaySettings::instance().ConnectionTimeout = 1;
    connect();
    EXPECT_TRUE(waitUntil([this] { return !sendAll(records({}, 1000)); }));
    thread_.join();
    EXPECT_TRUE(log_.lines().contains(u"5 [End] connect timeout"_s));
}

} // namespace
} // namespace quorin::test
