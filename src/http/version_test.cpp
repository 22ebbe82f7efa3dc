#include "http/version.h"

#include <gtest/gtest.h>

#include <utility>

namespace quorin::http {
namespace {

TEST(Version, MapsBetweenCodesAndNames) {
    constexpr std::pair<std::int32_t, std::string_view> kVersions[] = {
        {0, ""}, {9, "HTTP/0.9"}, {256, "HTTP/1.0"}, {257, "HTTP/1.1"}};
    for (const auto& [code, name] : kVersions) {
        EXPECT_EQ(versionName(static_cast<Version>(code)), name);
        EXPECT_EQ(static_cast<std::int32_t>(versionFromName(name)), code);
    }
}

TEST(Version, LookupIgnoresCase) {
    EXPECT_EQ(versionFromName("http/1.1"), Version::Http11);
    EXPECT_EQ(versionFromName("Http/1.0"), Version::Http10);
}

TEST(Version, OtherNamesAreUnknown) {
    EXPECT_EQ(versionFromName("HTTP/2.0"), Version::Unknown);
    EXPECT_EQ(versionFromName("HTTP/1"), Version::Unknown);
    EXPECT_EQ(versionFromName("HTTP/1.1 "), Version::Unknown);
    EXPECT_EQ(versionFromName("HTTP/1.10"), Version::Unknown);
}

TEST(Version, UndefinedCodesHaveEmptyNames) {
    EXPECT_EQ(versionName(static_cast<Version>(0x200)), "");
    EXPECT_EQ(versionName(static_cast<Version>(-1)), "");
}

} // namespace
} // namespace quorin::http
