#include "platform/windows/extended_path.h"

#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

TEST(ExtendedPathTest, AddsPrefixToAbsolutePath) {
    EXPECT_EQ(extendedPath(u"C:\\a\\b"_s), u"\\\\?\\C:\\a\\b"_s);
    EXPECT_EQ(extendedPath(u"C:/a\\b/\u00fc.json"_s), u"\\\\?\\C:\\a\\b\\\u00fc.json"_s);
    EXPECT_EQ(extendedPath(u"C:\\a//b\\\\c"_s), u"\\\\?\\C:\\a\\b\\c"_s);
}

TEST(ExtendedPathTest, AddsPrefixToPathOfShare) {
    EXPECT_EQ(extendedPath(u"\\\\server\\share\\a"_s), u"\\\\?\\UNC\\server\\share\\a"_s);
    EXPECT_EQ(extendedPath(u"//server/share/a"_s), u"\\\\?\\UNC\\server\\share\\a"_s);
}

TEST(ExtendedPathTest, KeepsNamesThatSystemWouldChange) {
    EXPECT_EQ(extendedPath(u"C:/a./NUL"_s), u"\\\\?\\C:\\a.\\NUL"_s);
    EXPECT_EQ(extendedPath(u"C:/a/b."_s), u"\\\\?\\C:\\a\\b."_s);
}

TEST(ExtendedPathTest, MakesPathAbsolute) {
    EXPECT_EQ(extendedPath(u"a"_s),
              u"\\\\?\\"_s + QDir::toNativeSeparators(QDir::currentPath() + u"/a"));
}

TEST(ExtendedPathTest, KeepsPathBeyond260Characters) {
    const QString name(200, u'n');
    const QString path = u"C:\\" + name + u'\\' + name + u'\\' + name;
    EXPECT_EQ(extendedPath(path), u"\\\\?\\" + path);
}

} // namespace
} // namespace quorin::platform
