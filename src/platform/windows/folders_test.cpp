#include "platform/folders.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

TEST(WindowsFoldersTest, CommonDataFolderIsProgramData) {
    const QString folder = qEnvironmentVariable("ProgramData");
    ASSERT_FALSE(folder.isEmpty());
    EXPECT_EQ(commonApplicationDataFolder(), folder);
    EXPECT_EQ(commonApplicationDataFolderForLog(), folder);
}

TEST(WindowsFoldersTest, CreatesFolderWithMixedSeparators) {
    const QTemporaryDir temporary;
    const QString folder = joinPath(
        joinPath(QDir::toNativeSeparators(temporary.path()), kProductFolder.toString()), u"log"_s);
    EXPECT_FALSE(isDirectory(folder));
    EXPECT_TRUE(makeDirectoryPath(folder));
    EXPECT_TRUE(isDirectory(folder));
    EXPECT_TRUE(QDir(temporary.filePath(u"Vemo/Quorin5/log"_s)).exists());
}

} // namespace
} // namespace quorin::platform
