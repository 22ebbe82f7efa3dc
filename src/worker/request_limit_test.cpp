// The greatest size of a request. A worker reads a request as a whole only if all of it has arrived
// before the worker starts, so the accepted end gets a receive buffer that is larger than the
// limit.

#include "handlers/handler_fixture.h"
#include "support/deadline.h"
#include "support/raw_socket.h"
#include "worker/worker.h"

#include <memory>
#include <thread>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

constexpr int kLimit = 1024 * 1024;
constexpr int kBufferSize = 8 * kLimit;

const QByteArray kDouble500 = kPlain500 + kPlain500;
const QByteArray kServed = "HTTP/1.1 200\r\nContent-Length: 7\r\n"
                           "Content-Type: inode/directory\r\n\r\ncontent";

class RequestLimitTest : public testing::Test {
protected:
    RequestLimitTest() {
        GatewaySettings::instance() = {};
        GatewaySettings::instance().ConnectionTimeout = 30;
        GatewaySettings::instance().HTTPRequestTimeout = 600;
        serverContext_->documentRoot = data_.path(u"root"_s);
        data_.write(u"root/a"_s, "content");
    }
    ~RequestLimitTest() override { GatewaySettings::instance() = {}; }

    void SetUp() override {
        const qint64 granted = enlargeReceiveBuffer(descriptor_.get(), kBufferSize);
        if (granted < 4 * kLimit) {
            GTEST_SKIP() << "this system grants a receive buffer of " << granted << " bytes";
        }
    }

    // The reply to a request that has arrived completely before the worker starts.
    QByteArray replyTo(const QByteArray& request) {
        connection_.client().send(request);
        EXPECT_TRUE(waitUntil([&] { return unreadBytes(descriptor_.get()) == request.size(); }))
            << unreadBytes(descriptor_.get());
        auto worker = std::make_unique<Worker>(std::move(descriptor_), serverContext_);
        std::thread thread([&worker] {
            worker->run();
            worker.reset();
        });
        QByteArray reply = connection_.client().readToEnd();
        thread.join();
        return reply;
    }

    // A request of `size` bytes, most of them in one header.
    static QByteArray requestOf(qsizetype size) {
        const QByteArray begin = "GET /a HTTP/1.1\r\nX: ";
        const QByteArray end = "\r\n\r\n";
        return begin + QByteArray(size - begin.size() - end.size(), 'x') + end;
    }

    LogRecord log_;
    DataFolder data_;
    std::shared_ptr<ServerContext> serverContext_ = std::make_shared<ServerContext>();
    Loopback connection_;
    platform::SocketDescriptor descriptor_ = connection_.takeDescriptor();
};

TEST_F(RequestLimitTest, ServesRequestBelowLimit) {
    EXPECT_EQ(replyTo(requestOf(kLimit - 1)), kServed);
}

TEST_F(RequestLimitTest, RefusesRequestThatReachesLimit) {
    EXPECT_EQ(replyTo(requestOf(kLimit)), kDouble500);
    EXPECT_TRUE(log_.lines().contains(u"5 [End] Failed to parse http request. (127.0.0.1)"_s));
}

TEST_F(RequestLimitTest, DeliversRefusalOfLargerRequest) {
    EXPECT_EQ(replyTo(requestOf(kLimit + kLimit / 2)), kDouble500);
}

TEST_F(RequestLimitTest, ServesHundredThousandHeaders) {
    QByteArray request = "GET /a HTTP/1.1\r\n";
    for (int i = 0; i < 100'000; ++i) {
        request += QByteArray::number(i, 36) + ":b\r\n";
    }
    request += "\r\n";
    ASSERT_LT(request.size(), kLimit);
    EXPECT_EQ(replyTo(request), kServed);
}

} // namespace
} // namespace quorin::test
