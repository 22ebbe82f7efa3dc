// Runs in a program whose qt.conf names no folder with TLS plugins.

#include "handlers/handler_fixture.h"
#include "worker/tls_backend.h"
#include "worker/tls_configuration.h"
#include "worker/worker.h"

#include <QSslCertificate>
#include <QSslKey>

#include <gmock/gmock.h>

#include <thread>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class WithoutTlsBackendTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(QSslSocket::supportsSsl()); }

    ~WithoutTlsBackendTest() override { GatewaySettings::instance() = {}; }
};

TEST_F(WithoutTlsBackendTest, ReportsWhatIsMissing) {
    const std::optional<QString> missing = missingTlsBackend();
    ASSERT_TRUE(missing);
    EXPECT_THAT(missing->toStdString(),
                testing::StartsWith("HTTPS is enabled, but Qt has no usable TLS backend "
                                    "(available: none). Install Qt's TLS plugin in the folder "));
}

TEST_F(WithoutTlsBackendTest, ServesNothingUnencrypted) {
    GatewaySettings::instance() = {};
    GatewaySettings::instance().ConnectionTimeout = 30;
    GatewaySettings::instance().HttpsEnabled = true;
    LogRecord log;
    const DataFolder data;
    Loopback connection;
    const auto serverContext = std::make_shared<ServerContext>();
    serverContext->tls.configure(tlsConfiguration(QSslCertificate(), QSslKey()));
    connection.client().send(get("/api/WebApiCommScheme"));
    std::thread([&] { Worker(connection.takeDescriptor(), serverContext).run(); }).join();
    EXPECT_EQ(connection.client().readToEnd(), "");
    EXPECT_EQ(log.lines(),
              (QStringList{u"2 [Start] void __cdecl Worker::run(void)"_s,
                           u"5 [End] TLS could not be started"_s,
                           u"2 [Start] void __cdecl Worker::SslSocketDisconnected(void)"_s,
                           u"2 [End] void __cdecl Worker::SslSocketDisconnected(void)"_s}));
}

} // namespace
} // namespace quorin::test
