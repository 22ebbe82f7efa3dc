#include "config/gateway_exception.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

TEST(GatewayExceptionTest, KeepsKindMessageAndSilence) {
    const GatewayException exception(GatewayException::Request, u"[End] broken"_s, true);
    EXPECT_EQ(exception.kind(), 2);
    EXPECT_EQ(exception.message(), u"[End] broken"_s);
    EXPECT_TRUE(exception.isSilent());
}

TEST(GatewayExceptionTest, KeepsFieldsWhenClonedAndRaised) {
    const GatewayException original(GatewayException::DuplicateInstance, u"twice"_s, false);
    const std::unique_ptr<GatewayException> clone(original.clone());
    try {
        clone->raise();
        FAIL() << "raise() must throw";
    } catch (const GatewayException& caught) {
        EXPECT_NE(&caught, clone.get());
        EXPECT_EQ(caught.kind(), 1);
        EXPECT_EQ(caught.message(), u"twice"_s);
        EXPECT_FALSE(caught.isSilent());
    }
}

TEST(GatewayExceptionTest, CanBeCaughtAsBaseClass) {
    const GatewayException exception(GatewayException::Fatal, u"fatal"_s, false);
    EXPECT_THROW(exception.raise(), QException);
    EXPECT_THROW(exception.raise(), std::exception);
}

TEST(GatewayExceptionTest, DoesNotReturnMessageFromWhat) {
    const GatewayException exception(GatewayException::Fatal, u"the message"_s, false);
    EXPECT_STRNE(exception.what(), "the message");
}

TEST(GatewayExceptionTest, AddsPrefixToEndMessage) {
    EXPECT_EQ(endMessage(u"connect timeout"_s), u"[End] connect timeout"_s);
}

} // namespace
} // namespace quorin::test
