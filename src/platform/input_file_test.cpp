#include "platform/input_file.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

class OpenForReadingTest : public testing::Test {
protected:
    void write(const QByteArray& content) const {
        QFile file(path_);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(content), content.size());
    }

    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(u"file \u00fc"_s);
    const QString otherPath_ = folder_.filePath(u"other"_s);
};

TEST_F(OpenForReadingTest, ReadsContentInPieces) {
    write("0123456789");
    const std::unique_ptr<QIODevice> file = openForReading(path_);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->size(), 10);
    EXPECT_EQ(file->read(4), "0123");
    EXPECT_EQ(file->pos(), 4);
    EXPECT_EQ(file->readAll(), "456789");
    EXPECT_EQ(file->read(1), "");
    ASSERT_TRUE(file->seek(3));
    EXPECT_EQ(file->read(2), "34");
    EXPECT_FALSE(file->isWritable());
}

TEST_F(OpenForReadingTest, ReadsBytesUnchanged) {
    const QByteArray content("\r\n\x1a\0\n\r\xff", 7);
    write(content);
    const std::unique_ptr<QIODevice> file = openForReading(path_);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->readAll(), content);
}

TEST_F(OpenForReadingTest, ReadsEmptyFile) {
    write("");
    const std::unique_ptr<QIODevice> file = openForReading(path_);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->size(), 0);
    EXPECT_EQ(file->readAll(), "");
}

TEST_F(OpenForReadingTest, ReadsBeyond4GiB) {
    constexpr qint64 size = qint64{5} * 1024 * 1024 * 1024 + 3;
    QFile sparse(path_);
    ASSERT_TRUE(sparse.open(QIODevice::WriteOnly));
    if (!sparse.resize(size)) {
        GTEST_SKIP() << "the volume has no space for a file of 5 GiB";
    }
    sparse.close();
    const std::unique_ptr<QIODevice> file = openForReading(path_);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->size(), size);
    ASSERT_TRUE(file->seek(size - 2));
    EXPECT_EQ(file->read(10), QByteArray(2, '\0'));
    EXPECT_EQ(file->pos(), size);
}

TEST_F(OpenForReadingTest, ReadsPathBeyond260Characters) {
    const QString name(100, u'n');
    const QString folder = folder_.filePath(name + u'/' + name + u'/' + name);
    ASSERT_TRUE(QDir().mkpath(folder));
    QFile written(folder + u"/file");
    ASSERT_TRUE(written.open(QIODevice::WriteOnly));
    written.write("content");
    written.close();
    const std::unique_ptr<QIODevice> file = openForReading(written.fileName());
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->readAll(), "content");
}

TEST_F(OpenForReadingTest, SeesWhatOthersAppend) {
    write("old");
    const std::unique_ptr<QIODevice> file = openForReading(path_);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->readAll(), "old");
    write("old and more");
    EXPECT_EQ(file->size(), 12);
    EXPECT_EQ(file->readAll(), " and more");
}

TEST_F(OpenForReadingTest, ReadsContentOfRenamedFile) {
    write("old");
    const std::unique_ptr<QIODevice> file = openForReading(path_);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(QFile::rename(path_, otherPath_));
    write("new content");
    EXPECT_EQ(file->size(), 3);
    EXPECT_EQ(file->readAll(), "old");
}

TEST_F(OpenForReadingTest, ReadsContentOfDeletedFile) {
    write("old");
    std::unique_ptr<QIODevice> file = openForReading(path_);
    ASSERT_NE(file, nullptr);
    ASSERT_TRUE(QFile::remove(path_));
    EXPECT_EQ(file->readAll(), "old");
    file.reset();
    EXPECT_FALSE(QFile::exists(path_));
}

TEST_F(OpenForReadingTest, ReturnsNullIfFileCannotBeOpened) {
    EXPECT_EQ(openForReading(path_), nullptr);
    EXPECT_EQ(openForReading(folder_.path()), nullptr);
    EXPECT_EQ(openForReading(path_ + u"/file"), nullptr);
}

} // namespace
} // namespace quorin::platform
