#include "platform/unix/file_content.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// Returns why a file cannot be read, or 0 if it can.
int errorOf(const std::string& path, std::size_t maxSize) {
    const auto file = readFile(path, maxSize);
    EXPECT_NE(file.value.has_value(), static_cast<bool>(file.error));
    return static_cast<int>(file.error.code());
}

class FileContentTest : public testing::Test {
protected:
    std::string path() const { return folder_.filePath(u"file"_s).toStdString(); }

    void write(const QByteArray& bytes, mode_t mode = 0600) {
        QFile file(QString::fromStdString(path()));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
        file.close();
        ASSERT_EQ(chmod(path().c_str(), mode), 0);
    }

private:
    QTemporaryDir folder_;
};

TEST_F(FileContentTest, ReadsFileUnchanged) {
    const QByteArray bytes("one\r\ntwo\0three", 14);
    write(bytes);
    const auto file = readFile(path(), 100).value;
    ASSERT_TRUE(file);
    EXPECT_EQ(file->bytes.view(), bytes);
}

TEST_F(FileContentTest, ReadsEmptyFile) {
    write("");
    const auto file = readFile(path(), 0).value;
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->bytes.empty());
}

TEST_F(FileContentTest, RefusesFileAboveMaxSize) {
    write(QByteArray(100, 'x'));
    EXPECT_TRUE(readFile(path(), 100).value);
    EXPECT_EQ(errorOf(path(), 99), EFBIG);
}

TEST_F(FileContentTest, WorldReadableMeansReadableByOthers) {
    for (const mode_t mode : {0600u, 0640u, 0660u, 0400u, 0662u}) {
        write("x", mode);
        EXPECT_FALSE(readFile(path(), 1).value->isWorldReadable) << std::oct << mode;
        ASSERT_EQ(chmod(path().c_str(), 0600), 0);
    }
    for (const mode_t mode : {0604u, 0644u, 0666u, 0404u}) {
        write("x", mode);
        EXPECT_TRUE(readFile(path(), 1).value->isWorldReadable) << std::oct << mode;
        ASSERT_EQ(chmod(path().c_str(), 0600), 0);
    }
}

TEST_F(FileContentTest, RefusesNonRegularFiles) {
    EXPECT_EQ(errorOf(path(), 100), ENOENT);
    ASSERT_EQ(mkdir(path().c_str(), 0700), 0);
    EXPECT_EQ(errorOf(path(), 100), EISDIR);
    EXPECT_EQ(errorOf("/dev/null", 100), EINVAL);
}

TEST_F(FileContentTest, DoesNotWaitForPipeWriter) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(errorOf(path(), 100), EINVAL);
}

// Like a file that is truncated while it is read: the size of this one is that of a page.
TEST_F(FileContentTest, EndsWhereFileEnds) {
    const std::string cpus = "/sys/devices/system/cpu/online";
    if (!QFile::exists(QString::fromStdString(cpus))) {
        GTEST_SKIP() << "this system has no " << cpus;
    }
    const auto file = readFile(cpus, 65536).value;
    ASSERT_TRUE(file);
    EXPECT_LT(file->bytes.size(), 4096u);
    EXPECT_TRUE(file->bytes.view().toByteArray().endsWith('\n'));
}

// The system cannot tell the speed of the loopback interface.
TEST_F(FileContentTest, ReportsErrorWhileReading) {
    const std::string speed = "/sys/class/net/lo/speed";
    if (!QFile::exists(QString::fromStdString(speed))) {
        GTEST_SKIP() << "this system has no " << speed;
    }
    EXPECT_EQ(errorOf(speed, 65536), EINVAL);
}

} // namespace
} // namespace quorin::platform
