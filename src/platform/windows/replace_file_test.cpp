#include "platform/replace_file.h"

#include "platform/windows/extended_path.h"
#include "platform/windows/move_file.h"
#include "platform/windows/system.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

using std::chrono::milliseconds;

// Files of which another program holds one open without FILE_SHARE_DELETE.
class ReplaceHeldFileTest : public testing::Test {
protected:
    ReplaceHeldFileTest() {
        write(from_, "new");
        write(to_, "old");
    }
    ~ReplaceHeldFileTest() override { release(); }

    static void write(const QString& path, const QByteArray& content) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write(content), content.size());
    }
    static QByteArray read(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
    }

    void hold(const QString& path) {
        holder_ = CreateFileW(wide(extendedPath(path)), GENERIC_READ, FILE_SHARE_READ, nullptr,
                              OPEN_EXISTING, 0, nullptr);
        ASSERT_NE(holder_, INVALID_HANDLE_VALUE);
    }
    void release() {
        if (holder_ != INVALID_HANDLE_VALUE) {
            CloseHandle(holder_);
            holder_ = INVALID_HANDLE_VALUE;
        }
    }

    // Moves the file as replaceFile() does, and calls `afterFailure` instead of sleeping.
    bool move(const std::function<void()>& afterFailure) {
        std::chrono::steady_clock::time_point now;
        return moveWithRetries({
            .move =
                [this] {
                    ++attempts_;
                    return moveReplacing(from_, to_);
                },
            .now = [&now] { return now; },
            .sleep =
                [&](milliseconds pause) {
                    now += pause;
                    afterFailure();
                },
        });
    }

    QTemporaryDir folder_;
    const QString from_ = folder_.filePath(u"new"_s);
    const QString to_ = folder_.filePath(u"old"_s);
    HANDLE holder_ = INVALID_HANDLE_VALUE;
    int attempts_ = 0;
};

TEST_F(ReplaceHeldFileTest, ReplacesTargetOnceItIsReleased) {
    hold(to_);
    EXPECT_TRUE(move([this] {
        if (attempts_ == 2) {
            release();
        }
    }));
    EXPECT_EQ(attempts_, 3);
    EXPECT_EQ(read(to_), "new");
    EXPECT_FALSE(QFile::exists(from_));
}

TEST_F(ReplaceHeldFileTest, MovesSourceOnceItIsReleased) {
    hold(from_);
    EXPECT_TRUE(move([this] { release(); }));
    EXPECT_EQ(attempts_, 2);
    EXPECT_EQ(read(to_), "new");
}

TEST_F(ReplaceHeldFileTest, KeepsTargetThatIsNeverReleased) {
    hold(to_);
    EXPECT_FALSE(move([] {}));
    release();
    EXPECT_EQ(read(to_), "old");
    EXPECT_EQ(read(from_), "new");
}

TEST_F(ReplaceHeldFileTest, GivesUpAfterRetryTime) {
    hold(to_);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(replaceFile(from_, to_));
    EXPECT_GE(std::chrono::steady_clock::now() - start, kMoveRetryTime);
    release();
    EXPECT_EQ(read(to_), "old");
    EXPECT_EQ(read(from_), "new");
}

} // namespace
} // namespace quorin::platform
