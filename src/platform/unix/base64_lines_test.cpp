#include "platform/unix/base64_lines.h"

#include <QByteArray>
#include <QStringBuilder>

#include <gtest/gtest.h>

namespace platform {
namespace {

QByteArray linesOf(QByteArrayView bytes) {
    return base64LinesOf(bytes).view().toByteArray();
}

TEST(Base64LinesTest, aFullLineHas64CharactersAndEndsInCrLf) {
    EXPECT_EQ(linesOf(QByteArray(48, '\xff')), QByteArray(64, '/') + "\r\n");
}

TEST(Base64LinesTest, theLastLineEndsInCrLfToo) {
    EXPECT_EQ(linesOf("a"), "YQ==\r\n");
    EXPECT_EQ(linesOf("ab"), "YWI=\r\n");
    EXPECT_EQ(linesOf("abc"), "YWJj\r\n");
    EXPECT_EQ(linesOf(QByteArray(49, '\0')), QByteArray(64, 'A') + "\r\nAA==\r\n");
}

TEST(Base64LinesTest, nothingGivesNothing) {
    EXPECT_EQ(linesOf(QByteArrayView()), "");
}

TEST(Base64LinesTest, everySizeGivesTheBytesBack) {
    QByteArray bytes;
    for (int size = 0; size < 300; ++size) {
        const QByteArray text = linesOf(bytes);
        EXPECT_EQ(text.count("\r\n"), (size + 47) / 48);
        EXPECT_EQ(QByteArray::fromBase64(QByteArray(text).replace("\r\n", "")), bytes);
        bytes += static_cast<char>(size * 7);
    }
}

} // namespace
} // namespace platform
