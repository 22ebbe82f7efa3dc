// DELETE with a reset date: the new content of the file, the reply and the log, and that a failure
// leaves the document unchanged. Also which manifest a request for "update.json" gets.

#include "support/serving_test.h"
#include "support/system.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QStandardPaths>
#include <QStorageInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <string>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

const QByteArray kRefused = kReply500 + kReply500;
const QByteArray kMissing = kReply404 + kReply500;
const QByteArray kReset = "HTTP/1.1 204 No Content\r\n\r\n";

const QByteArray kDate = "2024-06-01T12:00:00";

// An item that is newer than the dates of these tests, so that its document is not emptied.
const QByteArray kNewer = "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"}";

QByteArray deleteWith(const QByteArray& header,
                      const QByteArray& target = "/notifications/n.json") {
    return "DELETE " + target + " HTTP/1.1\r\n" + header + "\r\n";
}

QByteArray resetRequest(const QByteArray& date = kDate,
                        const QByteArray& target = "/notifications/n.json") {
    return deleteWith("X-Quorin-Notification-Reset-Date: " + date + "\r\n", target);
}

class NotificationTest : public ServingTest {
protected:
    // Writes the file that most requests name.
    void writeNotification(const QByteArray& content) const { site_.writeFile(kFile, content); }
    QByteArray notification() const { return site_.readFile(kFile); }
    QString path() const { return site_.rootPath(kFile); }

    QString resetLine(const QString& date = QString::fromLatin1(kDate)) const {
        return u"3 Reset " + path() + u" [date - " + date + u"].";
    }
    QString lockLine() const {
        return u"5 Failed to Lock for \"" + site_.stagingPath(u"n.json"_s) + u'"';
    }

    QStringList staged() const {
        return QDir(site_.stagingPath(QString()))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    // Expects the reset to be refused and the file to be unchanged.
    void expectFailure(const QByteArray& request = resetRequest()) {
        const QByteArray before = notification();
        EXPECT_EQ(ask(request), kRefused);
        EXPECT_TRUE(notification() == before) << notification().left(200).toStdString();
    }

    static const QString kFile;
    static const QString kFailed;
};

const QString NotificationTest::kFile = u"notifications/n.json"_s;
const QString NotificationTest::kFailed = u"5 [End] failed to initialize file (n.json)."_s;

TEST_P(NotificationTest, EmptiesFileAndSends204) {
    writeNotification("{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"" + kDate + "\"}}");
    startGateway();
    EXPECT_EQ(ask(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(staged(), QStringList());
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({resetLine(), u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationTest, KeepsDocumentThatHasNewerItem) {
    writeNotification(
        "{\"RemoteSetting\":{\"LastUpdated\":\"2024-06-01T12:00:01\",\"IsExist\":true},"
        "\"RemoteExecutionCancel\":{\"IsExist\":true,\"LastUpdated\":\"" +
        kDate +
        "\"},\"Other\":[1,\"\\u00fc\"],\n"
        "\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"2023-01-01\"}}\n");
    startGateway();
    const QByteArray after =
        "{\"Other\":[1,\"\u00fc\"],"
        "\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":\"2024-06-01T12:00:00\"},"
        "\"RemoteExecutionCancel\":{\"IsExist\":false,\"LastUpdated\":\"2024-06-01T12:00:00\"},"
        "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2024-06-01T12:00:01\"}}";
    EXPECT_EQ(ask(resetRequest()), kReset);
    EXPECT_EQ(notification(), after);
    // A repeated reset succeeds and changes nothing.
    EXPECT_EQ(ask(resetRequest("2024-06-01T12:00:00")), kReset);
    EXPECT_EQ(notification(), after);
    EXPECT_EQ(ask(get("/notifications/n.json")),
              "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(after.size()) +
                  "\r\nContent-Type: application/json\r\n\r\n" + after);
}

TEST_P(NotificationTest, EmptiesDocumentsOfAnyKind) {
    startGateway();
    const std::pair<const char*, const char*> cases[] = {
        {"{\"a\":1}", "{}"}, {"[1,2]", "[]"},   {"\"text\"", "\"\""}, {"7", "0"},
        {"7.5", "0.0"},      {"true", "false"}, {"null", "null"},
    };
    for (const auto& [before, after] : cases) {
        writeNotification(before);
        EXPECT_EQ(ask(resetRequest()), kReset) << before;
        EXPECT_EQ(notification(), after);
    }
}

TEST_P(NotificationTest, KeepsPendingItemsIfDateIsInvalid) {
    const QByteArray document =
        "{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"1971-01-01\"}}";
    writeNotification(document);
    startGateway();
    EXPECT_EQ(ask(resetRequest("%1 is %2 no date")), kReset);
    EXPECT_EQ(notification(), document);
    EXPECT_EQ(ask(resetRequest("")), kReset);
    EXPECT_EQ(notification(), document);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(u"%1 is %2 no date"_s),
                           u"3 DELETE notifications/n.json - -  204 0"_s, resetLine(QString()),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationTest, LogsPlaceholdersUnchanged) {
    site_.writeFile(u"notifications/%251%252.json"_s, "nothing");
    startGateway();
    EXPECT_EQ(ask(resetRequest("%2%1", "/notifications/%1%2.json")), kRefused);
    const QString path = site_.rootPath(u"notifications/%251%252.json"_s);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"3 Reset " + path + u" [date - %2%1].",
                           u"5 [End] failed to initialize file (%251%252.json)."_s}));
}

TEST_P(NotificationTest, TreatsDateWithoutOffsetAsLocalTime) {
    const auto pending = [](const char* date) -> QByteArray {
        return QByteArray("{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"") + date +
               "\"}}";
    };
    gateway_.setEnvironment(u"TZ"_s, u"JST-9"_s);
    startGateway();
    writeNotification(pending("2024-06-01T03:00:00Z"));
    EXPECT_EQ(ask(resetRequest("2024-06-01T12:00:00")), kReset);
    EXPECT_EQ(notification(), "{}");
    writeNotification(pending("2024-06-01T03:00:01Z"));
    EXPECT_EQ(ask(resetRequest("2024-06-01T12:00:00")), kReset);
    EXPECT_EQ(notification(), pending("2024-06-01T03:00:01Z"));
}

TEST_P(NotificationTest, IgnoresTimeLimitOfDownloads) {
    writeNotification("{\"a\":1}");
    Settings settings;
    settings.HTTPRequestTimeout = "0";
    startGateway(settings);
    EXPECT_EQ(ask(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{}");
}

TEST_P(NotificationTest, RefusesDeleteWithoutHeader) {
    writeNotification("{\"a\":1}");
    startGateway();
    const QByteArray headers[] = {
        "",
        "x-quorin-notification-reset-date: " + kDate + "\r\n",
        "X-QUORIN-NOTIFICATION-RESET-DATE: " + kDate + "\r\n",
        "X-Quorin-Notification-Reset-date: " + kDate + "\r\n",
        "X-Quorin-Notification-Reset-Dates: " + kDate + "\r\n",
        "X-Other: X-Quorin-Notification-Reset-Date: " + kDate + "\r\n",
    };
    for (const QByteArray& header : headers) {
        EXPECT_EQ(ask(deleteWith(header)), kRefused) << header.toStdString();
    }
    EXPECT_EQ(notification(), "{\"a\":1}");
    const QStringList logged = stopAndReadHandlerLog();
    EXPECT_EQ(logged.count(u"5 [End] invalid delete request."_s), qsizetype(std::size(headers)));
    EXPECT_EQ(logged.size(), qsizetype(std::size(headers)));
}

TEST_P(NotificationTest, TrimsDateAndUsesLaterOfTwoHeaders) {
    const QByteArray document =
        "{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"2024-01-01\"}}";
    writeNotification(document);
    startGateway();
    EXPECT_EQ(ask(deleteWith("X-Quorin-Notification-Reset-Date: 2025-01-01\r\n"
                             "X-Quorin-Notification-Reset-Date: \t2023-01-01 \t\r\n")),
              kReset);
    EXPECT_EQ(notification(), document);
    EXPECT_EQ(ask("delete /notifications/n.json HTTP/1.1\r\n"
                  "\tX-Quorin-Notification-Reset-Date :2025-01-01\r\n\r\n"),
              kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(
        stopAndReadHandlerLog(),
        (QStringList{resetLine(u"2023-01-01"_s), u"3 DELETE notifications/n.json - -  204 0"_s,
                     resetLine(u"2025-01-01"_s), u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationTest, Sends404IfTargetIsNotFile) {
    writeNotification("{}");
    startGateway();
    EXPECT_EQ(ask(resetRequest(kDate, "/notifications/none.json")), kMissing);
    EXPECT_EQ(ask(resetRequest(kDate, "/notifications")), kMissing);
    EXPECT_EQ(ask(resetRequest(kDate, "notifications/n.json")), kMissing);
    EXPECT_EQ(ask(resetRequest(kDate, "/notifications/../notifications/n.json")),
              "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n" + kReply500);
    EXPECT_EQ(staged(), QStringList());
}

TEST_P(NotificationTest, DoesNotResetForOtherMethods) {
    writeNotification("{\"a\":1}");
    startGateway();
    for (const char* const method : {"PUT", "POST"}) {
        EXPECT_EQ(ask(resetRequest().replace("DELETE", method)),
                  "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n" + kReply500);
    }
    EXPECT_THAT(ask(resetRequest().replace("DELETE", "GET")).toStdString(),
                testing::EndsWith("\r\n\r\n{\"a\":1}"));
    EXPECT_EQ(notification(), "{\"a\":1}");
}

TEST_P(NotificationTest, ResetsFileOfAnyFolder) {
    site_.writeFile(u"fwfiles/deep/n.json"_s, "{\"a\":1}");
    site_.writeFile(u"top.txt"_s, "[1]");
    site_.writeFile(u"patterns/p.xml"_s, "<p/>");
    startGateway();
    EXPECT_EQ(ask(resetRequest(kDate, "/fwfiles/deep/n.json")), kReset);
    EXPECT_EQ(ask(resetRequest(kDate, "/top.txt")), kReset);
    EXPECT_EQ(ask(resetRequest(kDate, "/patterns/p.xml")), kRefused);
    EXPECT_EQ(site_.readFile(u"fwfiles/deep/n.json"_s), "{}");
    EXPECT_EQ(site_.readFile(u"top.txt"_s), "[]");
    EXPECT_EQ(site_.readFile(u"patterns/p.xml"_s), "<p/>");
    EXPECT_EQ(staged(), QStringList());
    const QString date = QString::fromLatin1(kDate);
    EXPECT_EQ(
        stopAndReadHandlerLog(),
        (QStringList{
            u"3 Reset " + site_.rootPath(u"fwfiles/deep/n.json"_s) + u" [date - " + date + u"].",
            u"3 DELETE fwfiles/deep/n.json - -  204 0"_s,
            u"3 Reset " + site_.rootPath(u"top.txt"_s) + u" [date - " + date + u"].",
            u"3 DELETE top.txt - -  204 0"_s,
            u"3 Reset " + site_.rootPath(u"patterns/p.xml"_s) + u" [date - " + date + u"].",
            u"5 [End] failed to initialize file (p.xml)."_s}));
}

TEST_P(NotificationTest, KeepsMalformedDocumentAndRefusesTwice) {
    startGateway();
    const QByteArray documents[] = {
        "",
        "{\"RemoteExecution\":{\"IsExist\":true",
        "{\"RemoteExecution\":{}}",
        "{\"RemoteExecution\":{\"IsExist\":\"true\",\"LastUpdated\":\"2024-01-01\"}}",
        "{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":20240101}}",
        "{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"2024-01-01\"},"
        "\"RemoteSetting\":{\"IsExist\":0}}",
        "{" + kNewer + ",\"n\":1e400}",
    };
    QStringList expected;
    for (const QByteArray& document : documents) {
        writeNotification(document);
        expectFailure();
        expected << resetLine() << kFailed;
    }
    EXPECT_EQ(stopAndReadHandlerLog(), expected);
}

TEST_P(NotificationTest, ResetsAndServesDocumentOf5MiB) {
    QByteArray filler;
    for (int i = 0; filler.size() < 5 * 1024 * 1024; ++i) {
        filler += "{\"Id\":" + QByteArray::number(i) + ",\"Text\":\"text " +
                  QByteArray::number(i * 31) + "\"},";
    }
    filler.chop(1);
    const auto document = [&](const char* item) -> QByteArray {
        return "{\"List\":[" + filler + "],\"RemoteExecution\":" + item + "," + kNewer + "}";
    };
    writeNotification(document("{\"IsExist\":true,\"LastUpdated\":\"2024-01-01\"}"));
    startGateway();
    EXPECT_EQ(ask(resetRequest("2024-01-02")), kReset);
    const QByteArray after = document("{\"IsExist\":false,\"LastUpdated\":\"2024-01-02\"}");
    EXPECT_TRUE(notification() == after);
    EXPECT_TRUE(ask(get("/notifications/n.json")) ==
                "HTTP/1.1 200 OK\r\nContent-Length: " + QByteArray::number(after.size()) +
                    "\r\nContent-Type: application/json\r\n\r\n" + after);
}

TEST_P(NotificationTest, WritesDecimalPointInAnyLocale) {
    const char* const name = "de_DE.UTF-8";
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    char half[8] = "";
    if (std::setlocale(LC_NUMERIC, name) != nullptr) {
        std::snprintf(half, sizeof half, "%.1f", 0.5);
        std::setlocale(LC_NUMERIC, before.c_str());
    }
    if (half != std::string("0,5")) {
        GTEST_SKIP() << "the locale " << name << " is not installed";
    }
    writeNotification("{" + kNewer + ",\"a\":0.5,\"b\":1234567.891,\"c\":-1.5e-7,\"d\":1e300}");
    gateway_.setEnvironment(u"LC_ALL"_s, QString::fromLatin1(name));
    startGateway();
    EXPECT_EQ(ask(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{" + kNewer +
                                  ",\"a\":0.5,\"b\":1234567.8910000001,"
                                  "\"c\":-1.4999999999999999e-07,\"d\":1.0000000000000001e+300}");
}

TEST_P(NotificationTest, FailsAfterFiveSecondsIfLockIsHeld) {
    writeNotification("{\"a\":1}");
    QLockFile holder(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(holder.tryLock());
    startGateway();
    QElapsedTimer timer;
    timer.start();
    expectFailure();
    EXPECT_GE(timer.elapsed(), 4'950);
    EXPECT_EQ(stopAndReadHandlerLog(), (QStringList{resetLine(), lockLine(), kFailed}));
    EXPECT_EQ(staged(), QStringList(u"n.json.lock"_s)) << "the holder still holds the lock";
}

TEST_P(NotificationTest, AcquiresLockReleasedMeanwhile) {
    writeNotification("{\"a\":1}");
    QLockFile holder(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(holder.tryLock());
    startGateway();
    Client client(site_.port(), GetParam());
    client.send(resetRequest());
    ASSERT_TRUE(site_.waitUntilLogged(resetLine()));
    // The first attempt, of one second, must have failed.
    EXPECT_FALSE(client.socket().waitForReadyRead(1'500));
    EXPECT_EQ(notification(), "{\"a\":1}");
    holder.unlock();
    EXPECT_EQ(client.readToEnd(), kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationTest, LocksEachFileSeparately) {
    writeNotification("{\"a\":1}");
    QLockFile holder(site_.stagingPath(u"m.json.lock"_s));
    ASSERT_TRUE(holder.tryLock());
    startGateway();
    EXPECT_EQ(ask(resetRequest()), kReset);
}

TEST_P(NotificationTest, BreaksLockOfEndedProcess) {
    writeNotification("{\"a\":1}");
    QFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write("2000000000\nwriter\n\n\n\n"); // above the greatest process id of any system
    lock.close();
    startGateway();
    EXPECT_EQ(ask(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(staged(), QStringList());
}

TEST_P(NotificationTest, BreaksOldLockWithoutHolder) {
    writeNotification("{\"a\":1}");
    QFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.open(QIODevice::ReadWrite));
    startGateway();
    expectFailure();
    ASSERT_TRUE(lock.setFileTime(QDateTime::currentDateTime().addSecs(-60),
                                 QFileDevice::FileModificationTime));
    lock.close();
    EXPECT_EQ(ask(resetRequest()), kReset);
    EXPECT_EQ(staged(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Transports, NotificationTest, testing::ValuesIn(transports()),
                         TransportName());

// Faults of the file system. The file must be unchanged, and the next request must succeed after
// the fault is removed.
class NotificationFaultTest : public NotificationTest {
protected:
    NotificationFaultTest() {
        writeNotification(
            "{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"2024-01-01\"}," + kNewer +
            "}");
    }
    ~NotificationFaultTest() override {
        for (const QString& folder : {site_.stagingPath(QString()), notificationsFolder()}) {
            allowWriting(folder);
        }
    }

    QString notificationsFolder() const { return site_.rootPath(u"notifications"_s); }

    static void allowWriting(const QString& folder) {
        QFile::setPermissions(folder, QFile::permissions(folder) | QFile::WriteOwner);
    }
    static void forbidWriting(const QString& folder) {
        ASSERT_TRUE(QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner));
    }

    static bool canWriteInto(const QString& folder, const QStringList& command) {
        QFile probe(folder + u"/probe");
        bool written = false;
        if (command.isEmpty()) {
            written = probe.open(QIODevice::WriteOnly);
        } else {
            QProcess touch;
            touch.start(command.first(),
                        command.mid(1) + QStringList{u"touch"_s, probe.fileName()});
            written = touch.waitForFinished() && touch.exitCode() == 0;
        }
        probe.remove();
        return written;
    }

    // Returns a command that runs a program bound by file permissions. It is empty if every program
    // is, and there is none if this user cannot give up the privilege.
    static std::optional<QStringList> commandBoundByPermissions() {
        const QTemporaryDir folder;
        forbidWriting(folder.path());
        for (const QStringList& command :
             {QStringList(),
              QStringList{u"setpriv"_s, u"--bounding-set=-dac_override,-dac_read_search"_s}}) {
            if (!command.isEmpty() && QStandardPaths::findExecutable(command.first()).isEmpty()) {
                break;
            }
            if (!canWriteInto(folder.path(), command)) {
                allowWriting(folder.path());
                return command;
            }
        }
        allowWriting(folder.path());
        return std::nullopt;
    }

    void startGatewayUnder(const QStringList& command) {
        site_.writeSettings();
        if (command.isEmpty()) {
            gateway_.start();
        } else {
            gateway_.startUnder(command);
        }
    }

    void expectSuccess() {
        EXPECT_EQ(ask(resetRequest()), kReset);
        EXPECT_EQ(notification(), "{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":\"" +
                                      kDate + "\"}," + kNewer + "}");
        EXPECT_EQ(staged(), QStringList());
    }
};

TEST_P(NotificationFaultTest, DoesNotCreateStagingFolder) {
    ASSERT_TRUE(QDir(site_.stagingPath(QString())).removeRecursively());
    startGateway();
    expectFailure();
    EXPECT_FALSE(QFile::exists(site_.stagingPath(QString())));
    ASSERT_TRUE(QDir().mkpath(site_.stagingPath(QString())));
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), lockLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, KeepsFileAtPathOfStagingFolder) {
    const QString folder = site_.stagingPath(QString()).chopped(1);
    ASSERT_TRUE(QDir(folder).removeRecursively());
    QFile file(folder);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    startGateway();
    expectFailure();
    EXPECT_TRUE(QFileInfo(folder).isFile());
    ASSERT_TRUE(file.remove());
    ASSERT_TRUE(QDir().mkpath(folder));
    expectSuccess();
    EXPECT_THAT(site_.logged(), testing::IsSupersetOf({resetLine(), lockLine(), kFailed}));
}

TEST_P(NotificationFaultTest, FailsIfStagingFolderIsNotWritable) {
    const std::optional<QStringList> command = commandBoundByPermissions();
    if (!command) {
        GTEST_SKIP() << "permissions do not bind this user";
    }
    forbidWriting(site_.stagingPath(QString()));
    startGatewayUnder(*command);
    expectFailure();
    allowWriting(site_.stagingPath(QString()));
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), lockLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, FailsIfStagingFileIsFolder) {
    ASSERT_TRUE(QDir().mkpath(site_.stagingPath(u"n.json/folder"_s)));
    startGateway();
    expectFailure();
    EXPECT_EQ(staged(), QStringList(u"n.json"_s)) << "no lock";
    ASSERT_TRUE(QDir(site_.stagingPath(u"n.json"_s)).removeRecursively());
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, FailsIfDiskIsFull) {
    const QString fullDisk = u"/dev/full"_s;
    if (!QFile::exists(fullDisk)) {
        GTEST_SKIP() << "this system has no " << fullDisk.toStdString();
    }
    const QString stagingFile = site_.stagingPath(u"n.json"_s);
    ASSERT_TRUE(QFile::link(fullDisk, stagingFile));
    startGateway();
    expectFailure();
    EXPECT_TRUE(QFileInfo(path()).isFile());
    EXPECT_FALSE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(staged(), QStringList(u"n.json"_s)) << "no lock";
    ASSERT_TRUE(QFile::remove(stagingFile));
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, FailsIfOnlyPartFitsOnDisk) {
    if (QStandardPaths::findExecutable(u"sh"_s).isEmpty()) {
        GTEST_SKIP() << "there is no shell to limit the size of files";
    }
    // The unit of the limit is 512 bytes or 1 KiB, depending on the shell.
    constexpr qsizetype size = 512 * 1024;
    writeNotification("{\"Filler\":\"" + QByteArray(size, 'x') + "\"," + kNewer + "}");
    startGatewayUnder({u"sh"_s, u"-c"_s, u"trap '' XFSZ; ulimit -f 200; exec \"$@\""_s, u"sh"_s});
    expectFailure();
    EXPECT_GT(QFileInfo(site_.stagingPath(u"n.json"_s)).size(), 0) << "a part was written";
    EXPECT_LT(QFileInfo(site_.stagingPath(u"n.json"_s)).size(), size);
    // A smaller document fits, whatever the failure left in the staging file.
    writeNotification("{\"Filler\":\"" + QByteArray(size, 'x') + "\"}");
    EXPECT_EQ(ask(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(staged(), QStringList());
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, KeepsFileOfFolderThatIsNotWritable) {
    const std::optional<QStringList> command = commandBoundByPermissions();
    if (!command) {
        GTEST_SKIP() << "permissions do not bind this user";
    }
    forbidWriting(notificationsFolder());
    startGatewayUnder(*command);
    expectFailure();
    EXPECT_FALSE(staged().contains(u"n.json.lock"_s));
    allowWriting(notificationsFolder());
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, DoesNotCopyToAnotherVolume) {
    if (kOnWindows) {
        GTEST_SKIP() << "this test has no second volume on this system";
    }
    const QTemporaryDir elsewhere(u"/dev/shm/notifications-XXXXXX"_s);
    if (!elsewhere.isValid() || QStorageInfo(elsewhere.path()).device() ==
                                    QStorageInfo(site_.stagingPath(QString())).device()) {
        GTEST_SKIP() << "there is no second volume to write to";
    }
    const QByteArray document = notification();
    ASSERT_TRUE(QDir(notificationsFolder()).removeRecursively());
    ASSERT_TRUE(QFile::link(elsewhere.path(), notificationsFolder()));
    writeNotification(document);
    startGateway();
    expectFailure();
    EXPECT_FALSE(staged().contains(u"n.json.lock"_s));
    EXPECT_THAT(ask(get("/notifications/n.json")).toStdString(),
                testing::EndsWith("\r\n\r\n" + document.toStdString()));
    ASSERT_TRUE(QFile::remove(notificationsFolder()));
    writeNotification(document);
    expectSuccess();
}

INSTANTIATE_TEST_SUITE_P(Transports, NotificationFaultTest, testing::Values(Transport::Plain),
                         TransportName());

// The manifest of the local address of the connection.
class ManifestTest : public NotificationTest {
protected:
    QByteArray askAt(const QString& address, const QByteArray& request) {
        Client client(site_.port(), GetParam(), QHostAddress(address));
        client.send(request);
        return client.readToEnd();
    }

    static QByteArray streamed(const QByteArray& content) {
        return "HTTP/1.1 200\r\nContent-Length: " + QByteArray::number(content.size()) +
               "\r\nContent-Type: inode/directory\r\n\r\n" + content;
    }
};

TEST_P(ManifestTest, SelectsVariantOfEachAddress) {
    site_.writeFile(u"update.json"_s, "general");
    site_.writeFile(u"update_127.0.0.1.json"_s, "first");
    site_.writeFile(u"update_127.0.0.2.json"_s, "second");
    startGateway();
    EXPECT_EQ(askAt(u"127.0.0.1"_s, get("/update.json")), streamed("first"));
    EXPECT_EQ(askAt(u"127.0.0.2"_s, get("/update.json")), streamed("second"));
    EXPECT_EQ(askAt(u"127.0.0.3"_s, get("/update.json")), streamed("general"));
}

TEST_P(ManifestTest, IgnoresVariantOfAnotherAddress) {
    site_.writeFile(u"update_127.0.0.2.json"_s, "second");
    startGateway();
    EXPECT_EQ(askAt(u"127.0.0.1"_s, get("/update.json")), kMissing);
    // A request for its own name gets it on any address.
    EXPECT_EQ(askAt(u"127.0.0.1"_s, get("/update_127.0.0.2.json")), streamed("second"));
    EXPECT_EQ(stopAndReadHandlerLog(), (QStringList{u"2 Received requesting update.json from "_s,
                                                    u"2 Response update.json : update.json"_s,
                                                    u"5 [End] " + rooted(u"/update.json"_s) +
                                                        u" does not exist or directory",
                                                    u"2 Target file : update_127.0.0.2.json"_s,
                                                    u"2 GET update_127.0.0.2.json - -  200 0"_s}));
}

TEST_P(ManifestTest, RequiresExactName) {
    site_.writeFile(u"update_127.0.0.1.json"_s, "variant");
    site_.writeFile(u"Update.json"_s, "capital");
    site_.writeFile(u"update.json.bak"_s, "backup");
    startGateway();
    EXPECT_EQ(ask(get("/Update.json")), streamed("capital"));
    EXPECT_EQ(ask(get("/update.json.bak")), streamed("backup"));
    EXPECT_THAT(stopAndReadHandlerLog(),
                testing::Not(testing::Contains(u"2 Received requesting update.json from "_s)));
}

TEST_P(ManifestTest, Sends404IfVariantIsFolder) {
    site_.writeFile(u"update.json"_s, "general");
    site_.writeFile(u"update_127.0.0.1.json/a"_s, "inside");
    startGateway();
    EXPECT_EQ(ask(get("/update.json")), kMissing);
}

TEST_P(ManifestTest, SendsVariantInNotificationsFolder) {
    site_.writeFile(u"notifications/update_127.0.0.1.json"_s, "{}");
    startGateway();
    EXPECT_EQ(ask(get("/notifications/update.json")),
              "HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Type: application/json\r\n\r\n{}");
}

TEST_P(ManifestTest, ResetsVariant) {
    site_.writeFile(u"update.json"_s, "{\"general\":1}");
    site_.writeFile(u"update_127.0.0.1.json"_s, "{\"variant\":1}");
    startGateway();
    EXPECT_EQ(ask(resetRequest(kDate, "/update.json")), kReset);
    EXPECT_EQ(site_.readFile(u"update.json"_s), "{\"general\":1}");
    EXPECT_EQ(site_.readFile(u"update_127.0.0.1.json"_s), "{}");
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Received requesting update.json from "_s,
                           u"2 Response update.json : update_127.0.0.1.json"_s,
                           u"3 Reset " + site_.rootPath(u"update_127.0.0.1.json"_s) + u" [date - " +
                               QString::fromLatin1(kDate) + u"].",
                           u"3 DELETE update.json - -  204 0"_s}));
}

INSTANTIATE_TEST_SUITE_P(Transports, ManifestTest, testing::ValuesIn(transports()),
                         TransportName());

} // namespace
} // namespace quorin::test
