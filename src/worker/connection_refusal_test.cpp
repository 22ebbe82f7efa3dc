#include "worker/connection_refusal.h"

#include "support/loopback.h"
#include "support/print.h"

#include <QElapsedTimer>
#include <QTcpSocket>

#include <gtest/gtest.h>

#include <thread>

using namespace std::chrono_literals;

namespace quorin::test {
namespace {

const QByteArray kRefusal = "HTTP/1.1 503 Service Unavailable\r\n\r\n";

class RefusalTest : public testing::Test {
protected:
    Loopback connection_;
};

TEST_F(RefusalTest, RefusesAtOnceAfterRequest) {
    connection_.client().send(get("/fwfiles/a"));
    QElapsedTimer timer;
    timer.start();
    refuseConnection(connection_.takeDescriptor().release());
    EXPECT_LT(timer.elapsed(), 20'000);
    EXPECT_EQ(connection_.client().readToEnd(), kRefusal);
}

TEST_F(RefusalTest, WaitsForClientToSend) {
    std::thread server([this] { refuseConnection(connection_.takeDescriptor().release()); });
    EXPECT_FALSE(connection_.client().socket().waitForReadyRead(300));
    connection_.client().send("x");
    EXPECT_EQ(connection_.client().readToEnd(), kRefusal);
    server.join();
}

TEST_F(RefusalTest, RefusesSilentClientAfterTimeout) {
    QElapsedTimer timer;
    timer.start();
    refuseConnection(connection_.takeDescriptor().release(), 300ms);
    EXPECT_GE(timer.elapsed(), 290);
    EXPECT_EQ(connection_.client().readToEnd(), kRefusal);
}

TEST_F(RefusalTest, DoesNotWaitForClosedConnection) {
    connection_.client().abort();
    QElapsedTimer timer;
    timer.start();
    refuseConnection(connection_.takeDescriptor().release());
    EXPECT_LT(timer.elapsed(), 20'000);
}

TEST_F(RefusalTest, RepliesToLongRequest) {
    std::thread server([this] { refuseConnection(connection_.takeDescriptor().release()); });
    connection_.client().send("GET /" + QByteArray(200'000, 'x') + " HTTP/1.1\r\n\r\n");
    EXPECT_EQ(connection_.client().readToEnd(), kRefusal);
    server.join();
}

} // namespace
} // namespace quorin::test
