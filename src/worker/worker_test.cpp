#include "worker/worker.h"

#include "handlers/handler_fixture.h"
#include "platform/descriptors.h"
#include "support/deadline.h"
#include "support/descriptor_limit.h"
#include "support/some_certificate.h"
#include "worker/tls_configuration.h"

#include <future>
#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class WorkerTest : public testing::Test {
protected:
    WorkerTest() {
        GatewaySettings::instance() = {};
        GatewaySettings::instance().ConnectionTimeout = 30;
        serverContext_->documentRoot = data_.path(u"root"_s);
    }
    ~WorkerTest() override { GatewaySettings::instance() = {}; }

    LogRecord log_;
    DataFolder data_;
    std::shared_ptr<ServerContext> serverContext_ = std::make_shared<ServerContext>();
    Loopback connection_;
};

TEST_F(WorkerTest, ClosesConnectionWithoutLogIfNeverRun) {
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    EXPECT_TRUE(worker->autoDelete());
    worker.reset();
    EXPECT_EQ(connection_.client().readToEnd(), "");
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(WorkerTest, KeepsReleasedConnectionOpen) {
    qintptr descriptor = -1;
    {
        Worker worker(connection_.takeDescriptor(), serverContext_);
        descriptor = worker.releaseDescriptor();
    }
    QTcpSocket owner;
    ASSERT_TRUE(owner.setSocketDescriptor(descriptor));
    owner.write("still open");
    ASSERT_TRUE(owner.waitForBytesWritten(5000));
    EXPECT_EQ(connection_.client().read(10), "still open");
}

TEST_F(WorkerTest, ServesRequestOnAnyThread) {
    connection_.client().send(get("/api/WebApiCommScheme"));
    serverContext_->communicationScheme = CommunicationScheme::Http;
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    std::thread thread([&worker] {
        worker->run();
        worker.reset();
    });
    EXPECT_EQ(connection_.client().readToEnd(),
              "HTTP/1.1 200 OK\r\nContent-Length: 30\r\nContent-Type: application/json\r\n\r\n"
              "{\"CommunicationScheme\":\"http\"}");
    thread.join();
    EXPECT_EQ(log_.lines(),
              (QStringList{u"2 [Start] void __cdecl Worker::run(void)"_s,
                           u"2 [Start] void __cdecl Worker::SslSocketReadyRead(void)"_s,
                           u"2 [End] void __cdecl Worker::SslSocketReadyRead(void)"_s,
                           u"2 [End] void __cdecl Worker::run(void)"_s,
                           u"2 [Start] void __cdecl Worker::SslSocketDisconnected(void)"_s,
                           u"2 [End] void __cdecl Worker::SslSocketDisconnected(void)"_s}));
}

TEST_F(WorkerTest, ServesRequestOverTls) {
    GatewaySettings::instance().HttpsEnabled = true;
    serverContext_->communicationScheme = CommunicationScheme::Https;
    serverContext_->tls.configure(tlsConfiguration(someCertificate(), keyOfSomeCertificate()));
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    std::thread thread([&worker] {
        worker->run();
        worker.reset();
    });
    QSslSocket& socket = connection_.client().socket();
    socket.setPeerVerifyMode(QSslSocket::VerifyNone);
    socket.startClientEncryption();
    EXPECT_TRUE(socket.waitForEncrypted()) << socket.errorString().toStdString();
    EXPECT_EQ(socket.sessionProtocol(), QSsl::TlsV1_3);
    EXPECT_EQ(socket.peerCertificate(), someCertificate());
    connection_.client().send(get("/api/WebApiCommScheme"));
    EXPECT_EQ(connection_.client().readToEnd(),
              "HTTP/1.1 200 OK\r\nContent-Length: 31\r\nContent-Type: application/json\r\n\r\n"
              "{\"CommunicationScheme\":\"https\"}");
    thread.join();
}

TEST_F(WorkerTest, ServesNothingAfterConnectTimeout) {
    GatewaySettings::instance().ConnectionTimeout = 0;
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    std::promise<void> ended;
    std::promise<void> sent;
    std::thread thread([&worker, &ended, isSent = sent.get_future()] {
        worker->run();
        ended.set_value();
        isSent.wait();
        worker.reset();
    });
    ended.get_future().wait();
    connection_.client().send(get("/api/WebApiCommScheme"));
    sent.set_value();
    thread.join();
    EXPECT_EQ(connection_.client().readToEnd(), "");
    EXPECT_EQ(
        log_.lines(),
        (QStringList{u"2 [Start] void __cdecl Worker::run(void)"_s, u"5 [End] connect timeout"_s,
                     u"2 [End] void __cdecl Worker::run(void)"_s,
                     u"2 [Start] void __cdecl Worker::SslSocketDisconnected(void)"_s,
                     u"2 [End] void __cdecl Worker::SslSocketDisconnected(void)"_s}));
}

TEST_F(WorkerTest, StopsConnectionTimerBeforeServing) {
    // The system's event dispatcher starts expired timers in the same pass as the request; that of
    // GLib starts them in the next one, which does not happen.
    qputenv("QT_NO_THREADED_GLIB", "1");
    constexpr std::chrono::seconds timeout{1};
    constexpr qsizetype size = 48 * 1024 * 1024; // more than the system buffers
    GatewaySettings::instance().ConnectionTimeout = timeout.count();
    GatewaySettings::instance().HTTPRequestTimeout = 600;
    data_.write(u"root/a"_s, QByteArray(size, 'x'));
    connection_.client().limitReadAhead(1);
    connection_.client().send(get("/a"));
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    std::thread thread([&worker] {
        worker->run();
        worker.reset();
    });
    EXPECT_EQ(connection_.client().read(1), "H");
    // The worker cannot finish before the client reads on.
    const QDeadlineTimer expiry(timeout * 2);
    ASSERT_TRUE(waitUntil([&] { return expiry.hasExpired(); }));
    connection_.client().limitReadAhead(0);
    EXPECT_GT(connection_.client().readToEnd().size(), size);
    thread.join();
    qunsetenv("QT_NO_THREADED_GLIB");
    EXPECT_EQ(log_.lines().filter(u"connect timeout"_s), QStringList());
    EXPECT_EQ(log_.lines().filter(u" - -  200 0"_s).size(), 1);
}

TEST_F(WorkerTest, ServesNothingAfterQuit) {
    serverContext_->quitRequested = true;
    connection_.client().send(get("/api/WebApiCommScheme"));
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    std::thread thread([&worker] {
        worker->run();
        worker.reset();
    });
    EXPECT_EQ(connection_.client().readToEnd(), "");
    thread.join();
    EXPECT_EQ(log_.lines(), QStringList());
}

TEST_F(WorkerTest, ServesAfterServerIsGone) {
    serverContext_->communicationScheme = CommunicationScheme::Http;
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    serverContext_.reset();
    connection_.client().send(get("/api/WebApiCommScheme"));
    std::thread thread([&worker] {
        worker->run();
        worker.reset();
    });
    EXPECT_TRUE(connection_.client().readToEnd().startsWith("HTTP/1.1 200 OK\r\n"));
    thread.join();
}

// For tests with a logging library that throws std::bad_alloc. Exceptions must not propagate
// through Qt's event loop.
class ThrowingLogTest : public WorkerTest {
protected:
    ThrowingLogTest() { GatewaySettings::instance().ConnectionTimeout = 0; }
    ~ThrowingLogTest() override { qunsetenv("QUORIN_STUB_THROWS"); }

    // Runs a worker whose logging library throws when the message contains `text`.
    void runThrowingOn(const char* text) {
        qputenv("QUORIN_STUB_THROWS", text);
        auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
        std::thread([&worker] {
            worker->run();
            worker.reset();
        }).join();
        EXPECT_EQ(connection_.client().readToEnd(), "");
    }
};

TEST_F(ThrowingLogTest, LogsExceptionInEventLoop) {
    runThrowingOn("connect timeout");
    EXPECT_EQ(log_.lines().filter(u"5 "_s), QStringList(u"5 [End] std::bad_alloc"_s));
}

TEST_F(ThrowingLogTest, EndsWithoutLog) {
    runThrowingOn("Worker::run");
    EXPECT_EQ(log_.lines(), QStringList());
}

// Qt aborts the process if it cannot open a descriptor for an event loop.
TEST_F(WorkerTest, EndsWithoutDescriptorForEventLoop) {
    if (!platform::descriptorLimit()) {
        GTEST_SKIP() << "this system has no descriptor limit";
    }
    if (QUORIN_IS_SANITIZED) {
        GTEST_SKIP() << "the sanitizer needs descriptors for its own checks";
    }
    auto worker = std::make_unique<Worker>(connection_.takeDescriptor(), serverContext_);
    {
        const DescriptorLimit limit(3);
        std::thread([&worker] {
            worker->run();
            worker.reset();
        }).join();
    }
    EXPECT_EQ(connection_.client().readToEnd(), "");
}

} // namespace
} // namespace quorin::test
