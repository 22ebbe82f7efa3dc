#include "http/header_map.h"

#include "http/header_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace quorin::http {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(HeaderMap, IsInitiallyEmpty) {
    const HeaderMap headers;

    EXPECT_TRUE(headers.entries().empty());
    EXPECT_FALSE(headers.contains("Host"));
}

TEST(HeaderMap, StoresHeader) {
    HeaderMap headers;
    headers.set("Host", "gateway");

    EXPECT_TRUE(headers.contains("Host"));
    EXPECT_EQ(headers.get("Host"), "gateway");
}

TEST(HeaderMap, SetReplacesExistingValue) {
    HeaderMap headers;
    headers.set("Host", "first");
    headers.set("Host", "");

    EXPECT_THAT(headers.entries(), ElementsAre(Pair("Host", "")));
}

TEST(HeaderMap, NamesAreCaseSensitive) {
    HeaderMap headers;
    headers.set("host", "lower");
    headers.set("Host", "upper");

    EXPECT_EQ(headers.get("host"), "lower");
    EXPECT_EQ(headers.get("Host"), "upper");
    EXPECT_FALSE(headers.contains("HOST"));
}

TEST(HeaderMap, SortsNamesInByteOrder) {
    HeaderMap headers;
    for (const char* name : {"\xFF", "b", "a", "B", "ab", ""}) {
        headers.set(name, "");
    }

    EXPECT_THAT(headers.entries(), ElementsAre(Pair("", ""), Pair("B", ""), Pair("a", ""),
                                               Pair("ab", ""), Pair("b", ""), Pair("\xFF", "")));
}

TEST(HeaderMap, GetThrowsForMissingName) {
    const HeaderMap headers;
    try {
        headers.get("Host");
        FAIL() << "no exception was thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "Host does not exist");
    }
}

TEST(HeaderMap, GetReturnsCopy) {
    HeaderMap headers;
    headers.set("Host", "gateway");

    std::string value = headers.get("Host");
    value = "changed";

    EXPECT_EQ(headers.get("Host"), "gateway");
}

TEST(HeaderNames, MatchWireSpelling) {
    EXPECT_EQ(kConnection, "Connection");
    EXPECT_EQ(kContentLength, "Content-Length");
    EXPECT_EQ(kContentType, "Content-Type");
    EXPECT_EQ(kNotificationResetDate, "X-Quorin-Notification-Reset-Date");
}

} // namespace
} // namespace quorin::http
