#include "support/loopback.h"

#include "support/deadline.h"

#include <gtest/gtest.h>

namespace quorin::test {

Loopback::Loopback(const QHostAddress& address) {
    EXPECT_TRUE(acceptor_.listen(address)) << acceptor_.errorString().toStdString();
    client_.emplace(acceptor_.serverPort(), Transport::Plain, address);
    EXPECT_TRUE(acceptor_.waitForNewConnection(kTestTimeoutMs));
    EXPECT_TRUE(acceptor_.accepted.has_value());
}

} // namespace quorin::test
