#include "platform/unix/base64_lines.h"

#include <QByteArray>
#include <QStringBuilder>

#include <gtest/gtest.h>

namespace quorin::platform {
namespace {

QByteArray encode(QByteArrayView bytes) {
    return base64LinesOf(bytes).view().toByteArray();
}

TEST(Base64LinesTest, FullLineHas64CharactersAndCrLf) {
    EXPECT_EQ(encode(QByteArray(48, '\xff')), QByteArray(64, '/') + "\r\n");
}

TEST(Base64LinesTest, LastLineEndsInCrLf) {
    EXPECT_EQ(encode("a"), "YQ==\r\n");
    EXPECT_EQ(encode("ab"), "YWI=\r\n");
    EXPECT_EQ(encode("abc"), "YWJj\r\n");
    EXPECT_EQ(encode(QByteArray(49, '\0')), QByteArray(64, 'A') + "\r\nAA==\r\n");
}

TEST(Base64LinesTest, EmptyInputGivesEmptyText) {
    EXPECT_EQ(encode(QByteArrayView()), "");
}

TEST(Base64LinesTest, RoundTripsAllSizes) {
    QByteArray bytes;
    for (int size = 0; size < 300; ++size) {
        const QByteArray text = encode(bytes);
        EXPECT_EQ(text.count("\r\n"), (size + 47) / 48);
        EXPECT_EQ(QByteArray::fromBase64(QByteArray(text).replace("\r\n", "")), bytes);
        bytes += static_cast<char>(size * 7);
    }
}

} // namespace
} // namespace quorin::platform
