#include "json/byte_scan.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace ravenjson;

std::size_t findQuote(const std::string& text, std::size_t from = 0) {
    const char* const end = text.data() + text.size();
    const char* const found = bytescan::find(
        text.data() + from, end, [](bytescan::Block block) { return block.equalTo('"'); },
        [](char byte) { return byte == '"'; });
    return static_cast<std::size_t>(found - text.data());
}

TEST(ByteScanTest, FindsFirstMatchAtEveryPosition) {
    for (std::size_t length = 0; length < 70; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            std::string text(length, 'x');
            text.back() = '"';
            text[place] = '"';
            EXPECT_EQ(findQuote(text), place) << length;
        }
    }
}

TEST(ByteScanTest, ReturnsEndWithoutMatch) {
    for (std::size_t length = 0; length < 70; ++length) {
        EXPECT_EQ(findQuote(std::string(length, 'x')), length);
    }
}

TEST(ByteScanTest, IgnoresBytesBeyondEnd) {
    const std::string text = "xxxx\"";
    const char* const end = text.data() + 4;
    EXPECT_EQ(bytescan::find(
                  text.data(), end, [](bytescan::Block block) { return block.equalTo('"'); },
                  [](char byte) { return byte == '"'; }),
              end);
}

TEST(ByteScanTest, UpToComparesBytesAsUnsigned) {
    for (int byte = 0; byte < 256; ++byte) {
        std::string block(16, 'x');
        block[5] = static_cast<char>(byte);
        const unsigned expected = byte <= 0x1F ? 1U << 5 : 0U;
        EXPECT_EQ(bytescan::Block(block.data()).upTo(0x1F).bits(), expected) << byte;
    }
}

TEST(ByteScanTest, OrCombinesMarks) {
    const std::string text = "a\\cdefghijklmno\"";
    const bytescan::Block block(text.data());
    EXPECT_EQ((block.equalTo('"') | block.equalTo('\\')).bits(), 0x8002U);
}

} // namespace
