#include "handlers/large_file_limit.h"

#include <gtest/gtest.h>

namespace quorin {
namespace {

TEST(LargeFileLimitTest, AppliesToZipAndExeInAnyCase) {
    for (const char* const target : {"/fwfiles/a.zip", "/fwfiles/a.exe", "/fwfiles/a.ZIP", "/a.ExE",
                                     ".zip", "a.b.zip", "/fwfiles\\a.zip", "a.txt\\b.exe"}) {
        EXPECT_TRUE(isLargeFile(target)) << target;
    }
}

TEST(LargeFileLimitTest, IgnoresOtherExtensions) {
    for (const char* const target :
         {"", "/", "zip", "/fwfiles/zip", "a.zip.bak", "a.zipx", "a.zi", "a.", ".", "a.zip ",
          "a.zip?x", "a.zip\\", "a.zip\\b", "a.exe\\b.txt", "/fwfiles/a.json"}) {
        EXPECT_FALSE(isLargeFile(target)) << target;
    }
}

TEST(LargeFileLimitTest, DoesNotSplitAtSlashes) {
    EXPECT_FALSE(isLargeFile("/a.zip/b")); // the extension is "zip/b"
    EXPECT_FALSE(isLargeFile("/a.b/zip"));
}

TEST(LargeFileLimitTest, StaysWithinView) {
    const std::string_view text = "a.zip.bak";
    EXPECT_TRUE(isLargeFile(text.substr(0, 5)));
    EXPECT_FALSE(isLargeFile(std::string_view("a.zip\0", 6)));
}

} // namespace
} // namespace quorin
