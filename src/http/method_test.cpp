#include "http/method.h"

#include <gtest/gtest.h>

namespace quorin::http {
namespace {

TEST(Method, MapsBetweenCodesAndNames) {
    constexpr std::string_view kNames[] = {"UNKNOWN", "GET",     "HEAD",    "POST", "PUT",
                                           "DELETE",  "CONNECT", "OPTIONS", "TRACE"};
    std::int32_t code = 0;
    for (const std::string_view name : kNames) {
        EXPECT_EQ(methodName(static_cast<Method>(code)), name);
        EXPECT_EQ(static_cast<std::int32_t>(methodFromName(name)), code);
        ++code;
    }
}

TEST(Method, EnumeratorsHaveTheirNames) {
    EXPECT_EQ(methodName(Method::Unknown), "UNKNOWN");
    EXPECT_EQ(methodName(Method::Get), "GET");
    EXPECT_EQ(methodName(Method::Head), "HEAD");
    EXPECT_EQ(methodName(Method::Post), "POST");
    EXPECT_EQ(methodName(Method::Put), "PUT");
    EXPECT_EQ(methodName(Method::Delete), "DELETE");
    EXPECT_EQ(methodName(Method::Connect), "CONNECT");
    EXPECT_EQ(methodName(Method::Options), "OPTIONS");
    EXPECT_EQ(methodName(Method::Trace), "TRACE");
}

TEST(Method, LookupIgnoresCase) {
    EXPECT_EQ(methodFromName("get"), Method::Get);
    EXPECT_EQ(methodFromName("dElEtE"), Method::Delete);
}

TEST(Method, OtherNamesAreUnknown) {
    EXPECT_EQ(methodFromName("BREW"), Method::Unknown);
    EXPECT_EQ(methodFromName(""), Method::Unknown);
    EXPECT_EQ(methodFromName("GE"), Method::Unknown);
    EXPECT_EQ(methodFromName("GETS"), Method::Unknown);
    EXPECT_EQ(methodFromName("PATCH"), Method::Unknown);
    EXPECT_EQ(methodFromName("\xE7\xC5\xD4"), Method::Unknown);
}

TEST(Method, UndefinedCodesAreNamedUnknown) {
    EXPECT_EQ(methodName(static_cast<Method>(9)), "UNKNOWN");
    EXPECT_EQ(methodName(static_cast<Method>(-1)), "UNKNOWN");
}

} // namespace
} // namespace quorin::http
