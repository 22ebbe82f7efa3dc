#include "http/header_map.h"

#include "http/header_names.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>

namespace quorin::http {
namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(HeaderMap, IsEmptyAtFirst) {
    const HeaderMap headers;

    EXPECT_TRUE(headers.entries().empty());
    EXPECT_FALSE(headers.contains("Host"));
}

TEST(HeaderMap, HoldsWhatWasSet) {
    HeaderMap headers;
    headers.set("Host", "gateway");

    EXPECT_TRUE(headers.contains("Host"));
    EXPECT_EQ(headers.get("Host"), "gateway");
}

TEST(HeaderMap, SettingANameAgainReplacesItsValue) {
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

TEST(HeaderMap, IsOrderedByTheBytesOfTheNames) {
    HeaderMap headers;
    for (const char* name : {"\xFF", "b", "a", "B", "ab", ""}) {
        headers.set(name, "");
    }

    EXPECT_THAT(headers.entries(), ElementsAre(Pair("", ""), Pair("B", ""), Pair("a", ""),
                                               Pair("ab", ""), Pair("b", ""), Pair("\xFF", "")));
}

TEST(HeaderMap, GettingAnAbsentNameThrows) {
    const HeaderMap headers;
    try {
        headers.get("Host");
        FAIL() << "nothing was thrown";
    } catch (const std::out_of_range& error) {
        EXPECT_STREQ(error.what(), "Host does not exist");
    }
}

TEST(HeaderMap, GetsACopy) {
    HeaderMap headers;
    headers.set("Host", "gateway");

    std::string value = headers.get("Host");
    value = "changed";

    EXPECT_EQ(headers.get("Host"), "gateway");
}

TEST(HeaderNames, AreSpelledAsTheyAreSent) {
    EXPECT_EQ(kConnection, "Connection");
    EXPECT_EQ(kContentLength, "Content-Length");
    EXPECT_EQ(kContentType, "Content-Type");
    EXPECT_EQ(kNotificationResetDate, "X-Quorin-Notification-Reset-Date");
}

} // namespace
} // namespace quorin::http
