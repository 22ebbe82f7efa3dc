#include "platform/replace_file.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

void write(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(content), content.size());
}

QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
}

TEST(ReplaceFileTest, ReplacesTargetBySource) {
    const QTemporaryDir temporary;
    const QString from = temporary.filePath(u"new \u00fc"_s);
    const QString to = temporary.filePath(u"old \u00fc"_s);
    write(from, "new");
    write(to, "old and longer");
    EXPECT_TRUE(replaceFile(from, to));
    EXPECT_EQ(read(to), "new");
    EXPECT_FALSE(QFile::exists(from));
}

TEST(ReplaceFileTest, MovesSourceToMissingTarget) {
    const QTemporaryDir temporary;
    const QString from = temporary.filePath(u"new"_s);
    const QString to = temporary.filePath(u"missing"_s);
    write(from, "new");
    EXPECT_TRUE(replaceFile(from, to));
    EXPECT_EQ(read(to), "new");
    EXPECT_FALSE(QFile::exists(from));
}

TEST(FlushToDiskTest, WritesBufferedContent) {
    const QTemporaryDir temporary;
    const QString path = temporary.filePath(u"file \u00fc"_s);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write("content"), 7);
    EXPECT_TRUE(flushToDisk(file));
    EXPECT_EQ(read(path), "content") << "while the file is open";
    ASSERT_EQ(file.write(", more"), 6);
    EXPECT_TRUE(flushToDisk(file));
    file.close();
    EXPECT_EQ(read(path), "content, more");
}

TEST(ReplaceFileTest, KeepsTargetIfSourceIsMissing) {
    const QTemporaryDir temporary;
    const QString to = temporary.filePath(u"old"_s);
    write(to, "old");
    EXPECT_FALSE(replaceFile(temporary.filePath(u"missing"_s), to));
    EXPECT_EQ(read(to), "old");
}

} // namespace
} // namespace quorin::platform
