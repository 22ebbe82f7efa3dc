#include "platform/protected_folders.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

class ProtectedFoldersTest : public testing::Test {
protected:
    // Allows every account to write to `path`.
    static void expose(const QString& path) {
        ASSERT_TRUE(QFile::setPermissions(path, QFile::permissions(path) | QFile::WriteOther));
    }

    QTemporaryDir folder_;
};

TEST_F(ProtectedFoldersTest, NamesUnprivilegedWriters) {
    EXPECT_EQ(unprivilegedWriters(folder_.path()), QStringList());
    expose(folder_.path());
    EXPECT_EQ(unprivilegedWriters(folder_.path()), QStringList(u"every account"_s));
    EXPECT_EQ(unprivilegedWriters(folder_.filePath(u"missing"_s)), QStringList());
}

TEST_F(ProtectedFoldersTest, FindsUnsafePathsBelowRoot) {
    const QString inner = folder_.filePath(u"outer/inner"_s);
    ASSERT_TRUE(QDir().mkpath(inner));
    EXPECT_TRUE(findUnsafePaths(folder_.path()).empty());
    expose(inner);
    expose(folder_.path());
    const std::vector<UnsafePath> found = findUnsafePaths(folder_.path());
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].path, folder_.path());
    EXPECT_EQ(found[1].path, inner);
    EXPECT_EQ(findUnsafePaths(folder_.path(), 1).size(), 1u);
    EXPECT_TRUE(findUnsafePaths(folder_.filePath(u"missing"_s)).empty());
}

TEST_F(ProtectedFoldersTest, CreatesNoFolders) {
    const QString path = folder_.filePath(u"new"_s);
    EXPECT_EQ(createProtectedFolders({{path, FolderAccess::Modify}}, u"Gateway"_s), std::nullopt);
    EXPECT_FALSE(QFile::exists(path));
}

TEST_F(ProtectedFoldersTest, RepairTakesRightToWriteFromOthers) {
    EXPECT_EQ(repairCommands(u"/var/lib/a b"_s), QStringList(u"chmod -R o-w '/var/lib/a b'"_s));
}

} // namespace
} // namespace quorin::platform
