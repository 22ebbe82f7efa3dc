// A reset of a notification is on the disk before the client gets its reply, so that a power cut
// neither loses the reset nor the notification.

#include "support/serving_test.h"
#include "support/system.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class DurabilityTest : public testing::Test {
protected:
    void SetUp() override {
        if (QUORIN_IS_SANITIZED) {
            GTEST_SKIP() << "both the recorder and the sanitizer must be the first library loaded";
        }
        site_.writeFile(kName, kBefore);
        site_.writeSettings();
    }

    // Starts a gateway with the recorder, in which `failingCall` fails; none if empty.
    void startGateway(const QString& failingCall = {}) {
        QFile file(failingCall_);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(failingCall.toUtf8());
        file.close();
        gateway_.setEnvironment(u"QUORIN_CALL_RECORD"_s, record_);
        gateway_.setEnvironment(u"QUORIN_FAILING_CALL"_s, failingCall_);
        if (kOnWindows) {
            gateway_.start(); // the test host is the recorder
        } else {
            gateway_.startUnder({u"env"_s, u"LD_PRELOAD="_s + kRecorder});
        }
    }

    QByteArray reset() const {
        return exchange(site_.port(),
                        "DELETE /notifications/n.json HTTP/1.1\r\n"
                        "X-Quorin-Notification-Reset-Date: 2024-06-01T12:00:00\r\n\r\n");
    }

    // The recorded calls that involve the notification, its staging file or its folder, and the
    // replies.
    QStringList calls() const {
        QFile file(record_);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        QStringList lines = QString::fromUtf8(file.readAll()).split(u'\n');
        lines.removeIf([this](const QString& line) {
            return !line.startsWith(u"send ") && !line.endsWith(u"/n.json") &&
                   !line.endsWith(folder_);
        });
        return lines;
    }

    static const QString kName;
    static const QByteArray kBefore;

    const QString kRecorder = QStringLiteral(QUORIN_CALL_RECORDER);
    Site site_;
    Gateway gateway_{site_};
    const QString record_ = site_.temporaryPath() + u"/calls"_s;
    const QString failingCall_ = site_.temporaryPath() + u"/failing-call"_s;
    const QString staging_ = QDir::fromNativeSeparators(site_.stagingPath(u"n.json"_s));
    const QString target_ = site_.rootPath(kName);
    const QString folder_ = site_.rootPath(u"notifications"_s);
    const QString write_ = u"write " + staging_;
    const QString flush_ = u"fsync " + staging_;
    const QString rename_ = u"rename " + staging_ + u' ' + target_;
    const QString flushFolder_ = u"fsync " + folder_;
};

const QString DurabilityTest::kName = u"notifications/n.json"_s;
const QByteArray DurabilityTest::kBefore =
    "{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2024-01-01\"}}";

TEST_F(DurabilityTest, FlushesFileAndFolderBefore204) {
    startGateway();
    EXPECT_EQ(reset(), "HTTP/1.1 204 No Content\r\n\r\n");
    EXPECT_EQ(site_.readFile(kName), "{}");
    EXPECT_EQ(calls(), (QStringList{write_, flush_, rename_, flushFolder_,
                                    u"send HTTP/1.1 204 No Content"_s}));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(DurabilityTest, Sends500IfFileCannotBeWritten) {
    startGateway(write_);
    EXPECT_EQ(reset(), kReply500 + kReply500);
    EXPECT_EQ(site_.readFile(kName), kBefore);
    const QString send = u"send HTTP/1.1 500 Internal Server Error"_s;
    QStringList made = calls();
    EXPECT_GE(made.removeAll(write_), 1); // Qt writes again when the file is closed
    EXPECT_EQ(made, (QStringList{send, send}));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_TRUE(site_.logged().contains(u"5 [End] failed to initialize file (n.json)."_s));
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_F(DurabilityTest, Sends500IfFileCannotBeFlushed) {
    startGateway(flush_);
    EXPECT_EQ(reset(), kReply500 + kReply500);
    EXPECT_EQ(site_.readFile(kName), kBefore);
    const QString send = u"send HTTP/1.1 500 Internal Server Error"_s;
    EXPECT_EQ(calls(), (QStringList{write_, flush_, send, send}));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_TRUE(site_.logged().contains(u"5 [End] failed to initialize file (n.json)."_s));
    EXPECT_EQ(gateway_.errorOutput(), "");
}

// The file has been replaced and is complete; a 500 would claim that it is unchanged.
TEST_F(DurabilityTest, Sends204IfFolderCannotBeFlushed) {
    if (kOnWindows) {
        GTEST_SKIP() << "this system flushes the folder in the call that replaces the file";
    }
    startGateway(flushFolder_);
    EXPECT_EQ(reset(), "HTTP/1.1 204 No Content\r\n\r\n");
    EXPECT_EQ(site_.readFile(kName), "{}");
    EXPECT_TRUE(calls().contains(flushFolder_));
    EXPECT_EQ(gateway_.stop(), 0);
}

} // namespace
} // namespace quorin::test
