#include "platform/held_file.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

class HeldFileTest : public testing::Test {
protected:
    QTemporaryDir folder_;
    QString path_ = folder_.filePath(u"\u00fcber.status"_s);
};

TEST_F(HeldFileTest, IsReadWhileHeld) {
    EXPECT_EQ(HeldFile::read(path_), std::nullopt);
    {
        const auto file = HeldFile::create(path_, "content");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(HeldFile::read(path_), "content");
        EXPECT_EQ(HeldFile::read(path_), "content") << "reading must not release it";
    }
    EXPECT_EQ(HeldFile::read(path_), std::nullopt);
    EXPECT_FALSE(QFile::exists(path_));
}

TEST_F(HeldFileTest, HasOneHolder) {
    auto first = HeldFile::create(path_, "first");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(HeldFile::create(path_, "second"), nullptr);
    EXPECT_EQ(HeldFile::read(path_), "first");
    first.reset();
    const auto second = HeldFile::create(path_, "2");
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(HeldFile::read(path_), "2");
}

// As after a killed process or a power failure.
TEST_F(HeldFileTest, IgnoresFileOfEndedProcess) {
    QFile left(path_);
    ASSERT_TRUE(left.open(QIODevice::WriteOnly));
    left.write("left over");
    left.close();
    EXPECT_EQ(HeldFile::read(path_), std::nullopt);
    const auto file = HeldFile::create(path_, "new");
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(HeldFile::read(path_), "new");
}

TEST_F(HeldFileTest, FailsInMissingFolder) {
    const QString path = folder_.filePath(u"missing/file"_s);
    EXPECT_EQ(HeldFile::create(path, "content"), nullptr);
    EXPECT_EQ(HeldFile::read(path), std::nullopt);
}

TEST_F(HeldFileTest, DoesNotFollowLink) {
    const QString target = folder_.filePath(u"target"_s);
    if (!QFile::link(target, path_)) {
        GTEST_SKIP() << "this system has no symbolic links";
    }
    if (QFile::symLinkTarget(path_) != target || QFile::exists(path_ + u".lnk"_s)) {
        GTEST_SKIP() << "this system has no symbolic links";
    }
    EXPECT_EQ(HeldFile::create(path_, "content"), nullptr);
    EXPECT_FALSE(QFile::exists(target));
}

} // namespace
} // namespace quorin::platform
