#include "platform/file_alias.h"

#include "platform/windows/system.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <array>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

class WindowsFileAliasTest : public testing::Test {
protected:
    WindowsFileAliasTest() {
        EXPECT_TRUE(QDir(folder_.path()).mkpath(u"a long folder"_s));
        QFile file(folder_.filePath(u"a long folder/a long name.json"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    }

    // Expects that `path` reaches a file, and returns whether it is an alias.
    bool isAlias(const QString& path) const {
        EXPECT_TRUE(QFileInfo(folder_.path() + path).isFile()) << path.toStdString();
        return isFileAlias(folder_.path(), path);
    }

    // The short name of the existing file or folder, or its own name if it has none.
    QString shortName(const QString& path) const {
        std::array<wchar_t, MAX_PATH> result{};
        const QString native = QDir::toNativeSeparators(folder_.path() + path);
        EXPECT_NE(GetShortPathNameW(wide(native), result.data(), MAX_PATH), 0U);
        return QFileInfo(QDir::fromNativeSeparators(QString::fromWCharArray(result.data())))
            .fileName();
    }

    QTemporaryDir folder_;
};

TEST_F(WindowsFileAliasTest, AcceptsNamesInAnyLetterCase) {
    EXPECT_FALSE(isAlias(u"/a long folder/a long name.json"_s));
    EXPECT_FALSE(isAlias(u"/A Long Folder/A LONG NAME.JSON"_s));
}

TEST_F(WindowsFileAliasTest, DetectsShortNames) {
    const QString folder = shortName(u"/a long folder"_s);
    const QString file = shortName(u"/a long folder/a long name.json"_s);
    if (folder == u"a long folder") {
        GTEST_SKIP() << "this volume has no short names";
    }
    EXPECT_TRUE(isAlias(u'/' + folder + u"/a long name.json"));
    EXPECT_TRUE(isAlias(u"/a long folder/"_s + file));
    EXPECT_TRUE(isAlias(u'/' + folder + u'/' + file));
}

TEST_F(WindowsFileAliasTest, DetectsRemovedDots) {
    EXPECT_TRUE(isAlias(u"/a long folder/a long name.json."_s));
    EXPECT_TRUE(isAlias(u"/a long folder./a long name.json"_s));
    EXPECT_TRUE(isAlias(u"/a long folder/a long name.json/."_s));
    EXPECT_TRUE(isAlias(u"/a long folder/a long name.json/x/.."_s));
}

TEST_F(WindowsFileAliasTest, IgnoresNamesOfFolder) {
    const QString folder = shortName(u"/a long folder"_s);
    EXPECT_FALSE(isFileAlias(folder_.path() + u'/' + folder, u"/a long name.json"_s));
}

TEST_F(WindowsFileAliasTest, TreatsMissingFileAsAlias) {
    EXPECT_TRUE(isFileAlias(folder_.path(), u"/none"_s));
    EXPECT_TRUE(isFileAlias(folder_.path(), u"/NUL"_s));
    EXPECT_TRUE(isFileAlias(folder_.path(), u"/a long folder/a long name.json::$DATA"_s));
}

} // namespace
} // namespace quorin::platform
