#include "platform/folders.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

TEST(FoldersTest, JoinPathInsertsSeparator) {
    const QString separator = joinPath(QString(), QString());
    ASSERT_EQ(separator.size(), 1);
    EXPECT_EQ(joinPath(u"a"_s, u"b"_s), u"a"_s + separator + u"b"_s);
    EXPECT_EQ(joinPath(u"a"_s, separator + u"b"_s), u"a"_s + separator + u"b"_s);
    EXPECT_EQ(joinPath(u"a"_s + separator, separator + separator + u"b"_s),
              u"a"_s + separator + separator + separator + u"b"_s);
}

TEST(FoldersTest, CreatesFolderWithParents) {
    const QTemporaryDir temporary;
    const QString folder = temporary.filePath(u"one/two/dr\u00e9i"_s);
    EXPECT_FALSE(isDirectory(folder));
    EXPECT_TRUE(makeDirectoryPath(folder));
    EXPECT_TRUE(isDirectory(folder));
    EXPECT_TRUE(makeDirectoryPath(folder));
}

TEST(FoldersTest, CreatesFolderOutsideAnyCodePage) {
    const QTemporaryDir temporary;
    const QString folder = temporary.filePath(u"\u0434\u0432\u0430/\u4e09"_s);
    EXPECT_FALSE(isDirectory(folder));
    EXPECT_TRUE(makeDirectoryPath(folder));
    EXPECT_TRUE(isDirectory(folder));
    EXPECT_TRUE(QDir(folder).exists());
}

TEST(FoldersTest, DoesNotReplaceFileWithFolder) {
    const QTemporaryDir temporary;
    QFile file(temporary.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_FALSE(isDirectory(file.fileName()));
    EXPECT_FALSE(makeDirectoryPath(file.fileName()));
}

TEST(FoldersTest, FindsFolderForNewFiles) {
    const QTemporaryDir temporary;
    EXPECT_TRUE(canCreateFilesIn(temporary.path()));
    EXPECT_FALSE(canCreateFilesIn(temporary.filePath(u"missing"_s)));
    QFile file(temporary.filePath(u"file"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(canCreateFilesIn(file.fileName()));
    EXPECT_EQ(QDir(temporary.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
              QStringList(u"file"_s));
    EXPECT_FALSE(runtimeFolder().isEmpty());
}

TEST(FoldersTest, ShellFoldersAreAvailable) {
    EXPECT_TRUE(shellFoldersAvailable());
    EXPECT_FALSE(commonApplicationDataFolder().isEmpty());
    EXPECT_FALSE(commonApplicationDataFolderForLog().isEmpty());
}

} // namespace
} // namespace quorin::platform
