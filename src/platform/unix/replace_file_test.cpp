// The order of the system calls that flush and replace a file. The program's own definitions of
// these calls take precedence over the C library's.

#include "platform/replace_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

// Records calls while the object exists. One object at a time, used by one thread.
class CallRecorder {
public:
    CallRecorder() { current = this; }
    ~CallRecorder() { current = nullptr; }
    CallRecorder(const CallRecorder&) = delete;
    CallRecorder& operator=(const CallRecorder&) = delete;

    [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }

    // Lets calls that equal `call` fail with `error`, once or always.
    void fail(const std::string& call, int error, bool isPermanent = true) {
        failing_ = call;
        error_ = error;
        isPermanent_ = isPermanent;
    }

    // Returns 0, or the error with which the call must fail.
    int add(const std::string& call) {
        calls_.push_back(call);
        if (call != failing_) {
            return 0;
        }
        if (!isPermanent_) {
            failing_.clear();
        }
        return error_;
    }

    static CallRecorder* current;

private:
    std::vector<std::string> calls_;
    std::string failing_;
    int error_ = 0;
    bool isPermanent_ = true;
};

CallRecorder* CallRecorder::current = nullptr;

std::string nameOf(const char* path) {
    return QFileInfo(QFile::decodeName(path)).fileName().toStdString();
}

std::string nameOf(int descriptor) {
    const QString link = u"/proc/self/fd/"_s + QString::number(descriptor);
    return QFileInfo(QFile::symLinkTarget(link)).fileName().toStdString();
}

// Records the call if a test does so. Returns false, with errno set, if it must fail.
bool mayCall(const std::string& call) {
    const int error = CallRecorder::current == nullptr ? 0 : CallRecorder::current->add(call);
    if (error != 0) {
        errno = error;
    }
    return error == 0;
}

// The definition that would be called without this program's.
template<typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

ssize_t write(int descriptor, const void* data, size_t size) {
    if (CallRecorder::current != nullptr && !mayCall("write " + nameOf(descriptor))) {
        return -1;
    }
    return next<ssize_t(int, const void*, size_t)>("write")(descriptor, data, size);
}

int fsync(int descriptor) {
    if (!mayCall("fsync " + nameOf(descriptor))) {
        return -1;
    }
    return next<int(int)>("fsync")(descriptor);
}

int fdatasync(int descriptor) {
    if (!mayCall("fdatasync " + nameOf(descriptor))) {
        return -1;
    }
    return next<int(int)>("fdatasync")(descriptor);
}

int rename(const char* from, const char* to) noexcept {
    if (!mayCall("rename " + nameOf(from) + " " + nameOf(to))) {
        return -1;
    }
    return next<int(const char*, const char*)>("rename")(from, to);
}

} // extern "C"
#pragma GCC visibility pop

namespace quorin::platform {
namespace {

using Calls = std::vector<std::string>;

class ReplaceFileOrderTest : public testing::Test {
protected:
    ReplaceFileOrderTest() {
        EXPECT_TRUE(QDir(temporary_.path()).mkdir(u"folder"_s));
        QFile old(to_);
        EXPECT_TRUE(old.open(QIODevice::WriteOnly));
        old.write("old");
    }

    // As a caller does that must not lose the old content before the new one is on the disk.
    bool writeAndReplace() const {
        QFile file(from_);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        EXPECT_EQ(file.write("new"), 3);
        if (!flushToDisk(file)) {
            return false;
        }
        file.close();
        return replaceFile(from_, to_);
    }

    QByteArray content() const {
        QFile file(to_);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(cannot be read)");
    }

    static mode_t modeOf(const QString& path) {
        struct stat status {};
        EXPECT_EQ(stat(QFile::encodeName(path).constData(), &status), 0);
        return status.st_mode & 07777;
    }

    QTemporaryDir temporary_;
    const QString from_ = temporary_.filePath(u"new"_s);
    const QString to_ = temporary_.filePath(u"folder/old"_s);
};

TEST_F(ReplaceFileOrderTest, FlushesFileBeforeAndFolderAfterRename) {
    CallRecorder recorder;
    EXPECT_TRUE(writeAndReplace());
    EXPECT_EQ(recorder.calls(),
              (Calls{"write new", "fsync new", "rename new old", "fsync folder"}));
    EXPECT_EQ(content(), "new");
}

TEST_F(ReplaceFileOrderTest, FlushesFolderOfNewTarget) {
    ASSERT_TRUE(QFile::remove(to_));
    CallRecorder recorder;
    EXPECT_TRUE(writeAndReplace());
    EXPECT_EQ(recorder.calls(),
              (Calls{"write new", "fsync new", "rename new old", "fsync folder"}));
    EXPECT_EQ(content(), "new");
}

TEST_F(ReplaceFileOrderTest, ReportsFailureOfFlush) {
    CallRecorder recorder;
    recorder.fail("fsync new", EIO);
    EXPECT_FALSE(writeAndReplace());
    EXPECT_EQ(recorder.calls(), (Calls{"write new", "fsync new"}));
    EXPECT_EQ(content(), "old");
}

TEST_F(ReplaceFileOrderTest, ReportsFailureOfWrite) {
    CallRecorder recorder;
    recorder.fail("write new", ENOSPC, false);
    EXPECT_FALSE(writeAndReplace());
    EXPECT_EQ(recorder.calls().front(), "write new");
    EXPECT_EQ(content(), "old");
}

TEST_F(ReplaceFileOrderTest, RepeatsInterruptedFlush) {
    CallRecorder recorder;
    recorder.fail("fsync new", EINTR, false);
    EXPECT_TRUE(writeAndReplace());
    EXPECT_EQ(recorder.calls(),
              (Calls{"write new", "fsync new", "fsync new", "rename new old", "fsync folder"}));
}

TEST_F(ReplaceFileOrderTest, DoesNotFlushFolderAfterFailedRename) {
    CallRecorder recorder;
    recorder.fail("rename new old", EXDEV);
    EXPECT_FALSE(writeAndReplace());
    EXPECT_EQ(recorder.calls(), (Calls{"write new", "fsync new", "rename new old"}));
    EXPECT_EQ(content(), "old");
}

TEST_F(ReplaceFileOrderTest, KeepsModeOfTarget) {
    constexpr mode_t mode = 0464;
    ASSERT_EQ(chmod(QFile::encodeName(to_).constData(), mode), 0);
    EXPECT_TRUE(writeAndReplace());
    EXPECT_EQ(modeOf(to_), mode);
    EXPECT_EQ(content(), "new");
}

TEST_F(ReplaceFileOrderTest, RestoresModeAfterFailedRename) {
    ASSERT_EQ(chmod(QFile::encodeName(to_).constData(), 0444), 0);
    CallRecorder recorder;
    recorder.fail("rename new old", EXDEV);
    EXPECT_FALSE(writeAndReplace());
    EXPECT_EQ(modeOf(from_) & S_IWUSR, mode_t{S_IWUSR}) << "so that it can be written again";
    EXPECT_EQ(modeOf(to_), mode_t{0444});
}

TEST_F(ReplaceFileOrderTest, SucceedsIfFolderCannotBeFlushed) {
    CallRecorder recorder;
    recorder.fail("fsync folder", EINVAL);
    EXPECT_TRUE(writeAndReplace());
    EXPECT_EQ(recorder.calls().back(), "fsync folder");
    EXPECT_EQ(content(), "new");
}

} // namespace
} // namespace quorin::platform
