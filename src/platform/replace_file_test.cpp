#include "platform/replace_file.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace platform {
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

TEST(ReplaceFileTest, theSourceTakesThePlaceOfTheTarget) {
    const QTemporaryDir temporary;
    const QString from = temporary.filePath(u"new \u00fc"_s);
    const QString to = temporary.filePath(u"old \u00fc"_s);
    write(from, "new");
    write(to, "old and longer");
    EXPECT_TRUE(replaceFile(from, to));
    EXPECT_EQ(read(to), "new");
    EXPECT_FALSE(QFile::exists(from));
}

TEST(ReplaceFileTest, aMissingSourceLeavesTheTargetAsItWas) {
    const QTemporaryDir temporary;
    const QString to = temporary.filePath(u"old"_s);
    write(to, "old");
    EXPECT_FALSE(replaceFile(temporary.filePath(u"missing"_s), to));
    EXPECT_EQ(read(to), "old");
}

} // namespace
} // namespace platform
