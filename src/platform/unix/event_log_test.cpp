#include "platform/event_log.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// Replaces standard error by a pipe, and sets the variable with which systemd announces the stream.
// The destructor restores both.
class CapturedErrors {
public:
    explicit CapturedErrors(bool isJournal) {
        std::fflush(stderr);
        EXPECT_EQ(pipe2(pipe_, O_NONBLOCK), 0);
        EXPECT_GE(dup2(pipe_[1], STDERR_FILENO), 0);
        struct stat status {};
        EXPECT_EQ(fstat(STDERR_FILENO, &status), 0);
        const auto inode = quint64{status.st_ino} + (isJournal ? 0 : 1);
        qputenv("JOURNAL_STREAM",
                QByteArray::number(quint64{status.st_dev}) + ':' + QByteArray::number(inode));
    }
    ~CapturedErrors() {
        qunsetenv("JOURNAL_STREAM");
        dup2(before_, STDERR_FILENO);
        for (const int descriptor : {before_, pipe_[0], pipe_[1]}) {
            close(descriptor);
        }
    }
    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;

    [[nodiscard]] std::string read() const {
        std::string text(4096, '\0');
        const ssize_t size = ::read(pipe_[0], text.data(), text.size());
        text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return text;
    }

private:
    const int before_ = dup(STDERR_FILENO);
    int pipe_[2]{};
};

TEST(EventLogTest, WritesLineWithPriorityToJournal) {
    const CapturedErrors errors(true);
    const EventLog log = EventLog::ofProgram();
    log.report(EventKind::Started, u"größer"_s);
    log.report(EventKind::Stopped, u"a"_s);
    log.report(EventKind::StartFailed, u"b"_s);
    log.report(EventKind::CertificateMissing, u"c %1 %s"_s);
    log.report(EventKind::CertificateExpires, u"d"_s);
    EXPECT_EQ(errors.read(), "<6>größer\n<6>a\n<3>b\n<3>c %1 %s\n<4>d\n");
}

TEST(EventLogTest, IsSilentIfJournalReadsAnotherStream) {
    const CapturedErrors errors(false);
    EventLog::ofProgram().report(EventKind::Started, u"text"_s);
    EXPECT_EQ(errors.read(), "");
}

TEST(EventLogTest, IsSilentWithoutJournal) {
    const CapturedErrors errors(true);
    qunsetenv("JOURNAL_STREAM");
    EventLog::ofService(u"source"_s).report(EventKind::Started, u"text"_s);
    EXPECT_EQ(errors.read(), "");
}

TEST(EventLogTest, IsSilentWithoutStandardError) {
    const CapturedErrors errors(true);
    close(STDERR_FILENO);
    EventLog::ofProgram().report(EventKind::Started, u"text"_s);
    EXPECT_EQ(errors.read(), "");
}

TEST(EventLogTest, NeedsNoRegisteredSource) {
    EXPECT_EQ(registerEventSource(u"source"_s, u"/missing"_s), std::nullopt);
    EXPECT_EQ(removeEventSource(u"source"_s), std::nullopt);
}

} // namespace
} // namespace quorin::platform
