#include "platform/folders.h"

#include "platform/control_pipe.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

class PipeObstacleTest : public testing::Test {
protected:
    PipeObstacleTest() { setTemporaryFolder(folder_.path()); }
    ~PipeObstacleTest() override { qputenv("TMPDIR", before_); }

    static void setTemporaryFolder(const QString& folder) {
        qputenv("TMPDIR", QFile::encodeName(folder));
    }

    QString pipe_ = kControlPipeName.toString();
    QByteArray before_ = qgetenv("TMPDIR");
    QTemporaryDir folder_;
};

TEST_F(PipeObstacleTest, IsNoneInOwnFolder) {
    EXPECT_EQ(obstacleToControlPipe(pipe_), QString());
    QFile stale(folder_.filePath(pipe_)); // the gateway replaces it
    ASSERT_TRUE(stale.open(QIODevice::WriteOnly));
    EXPECT_EQ(obstacleToControlPipe(pipe_), QString());
}

TEST_F(PipeObstacleTest, IsMissingFolderIfRootIsProtected) {
    setTemporaryFolder(folder_.filePath(u"missing"_s));
    EXPECT_EQ(obstacleToControlPipe(pipe_),
              canCreateFilesIn(u"/"_s) ? QString()
                                       : u"this account may not create files in /, used because "
                                         u"the temporary folder does not exist"_s);
}

// Runs in child processes: a process that has changed to an unprivileged account cannot change
// back.
TEST_F(PipeObstacleTest, IsProtectedFolder) {
    constexpr uid_t kUnprivilegedUser = 65534;
    if (getuid() != 0) {
        GTEST_SKIP() << "only root can change to another account";
    }
    const auto reportsObstacle = [this](const QString& folder, const QString& obstacle) {
        setTemporaryFolder(folder);
        return setuid(kUnprivilegedUser) == 0 && obstacleToControlPipe(pipe_) == obstacle;
    };
    const QString reason = u"this account may not create files in "_s;
    EXPECT_EXIT(_exit(reportsObstacle(folder_.path(), reason + folder_.path() + u'/') ? 0 : 1),
                testing::ExitedWithCode(0), "");
    EXPECT_EXIT(
        _exit(reportsObstacle(folder_.path() + u"-missing",
                              reason + u"/, used because the temporary folder does not exist")
                  ? 0
                  : 1),
        testing::ExitedWithCode(0), "");
}

TEST_F(PipeObstacleTest, IsFolderOfThatName) {
    const QString file = folder_.filePath(pipe_);
    ASSERT_TRUE(makeDirectoryPath(file));
    EXPECT_EQ(obstacleToControlPipe(pipe_), QString(file + u" is a folder"));
}

TEST_F(PipeObstacleTest, IsLongPath) {
    const QString folder = folder_.filePath(QString(100, u'x'));
    ASSERT_TRUE(makeDirectoryPath(folder));
    setTemporaryFolder(folder);
    EXPECT_EQ(obstacleToControlPipe(pipe_),
              QString(u"the path of the temporary folder is too long: " + folder + u'/'));
}

} // namespace
} // namespace quorin::platform
