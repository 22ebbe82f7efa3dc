// DELETE requests with a reset date: the file, the reply and the log after a success, and that no
// failure destroys the document. Also the manifest that a request for "update.json" selects.

#include "support/deadline.h"
#include "support/permissions.h"
#include "support/serving_test.h"
#include "support/system.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLockFile>
#include <QStorageInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <clocale>
#include <cstdio>
#include <optional>
#include <string>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace quorin::test {
namespace {

const QByteArray kRefused = kReply500 + kReply500;
const QByteArray kMissing = kReply404 + kReply500;
const QByteArray kReset = kReply204;

const QByteArray kDate = "2024-06-01T12:00:00";

// An item newer than every date in these tests. It keeps its document from being emptied.
const QByteArray kNewer = "\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"2030-01-01\"}";

QByteArray deleteRequest(const QByteArray& header,
                         const QByteArray& target = "/notifications/n.json") {
    return "DELETE " + target + " HTTP/1.1\r\n" + header + "\r\n";
}

QByteArray resetRequest(const QByteArray& date = kDate,
                        const QByteArray& target = "/notifications/n.json") {
    return resetRequestFor(target, date);
}

class NotificationTest : public ServingTest {
protected:
    // The file that most of these tests reset.
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

    // Checks that the request is refused with 500 twice and does not change the file.
    void expectFailure(const QByteArray& bytes = resetRequest()) {
        const QByteArray before = notification();
        EXPECT_EQ(request(bytes), kRefused);
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
    EXPECT_EQ(request(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(staged(), QStringList());
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({resetLine(), u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationTest, ClearsOlderItemsAndKeepsRest) {
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
    EXPECT_EQ(request(resetRequest()), kReset);
    EXPECT_EQ(notification(), after);
    // A repeated reset changes nothing and succeeds.
    EXPECT_EQ(request(resetRequest("2024-06-01T12:00:00")), kReset);
    EXPECT_EQ(notification(), after);
    EXPECT_EQ(request(get("/notifications/n.json")), wholeReply(after));
}

TEST_P(NotificationTest, EmptiesEveryKindOfDocument) {
    startGateway();
    const std::pair<const char*, const char*> cases[] = {
        {"{\"a\":1}", "{}"}, {"[1,2]", "[]"},   {"\"text\"", "\"\""}, {"7", "0"},
        {"7.5", "0.0"},      {"true", "false"}, {"null", "null"},
    };
    for (const auto& [before, after] : cases) {
        writeNotification(before);
        EXPECT_EQ(request(resetRequest()), kReset) << before;
        EXPECT_EQ(notification(), after);
    }
}

TEST_P(NotificationTest, KeepsPendingItemsIfDateIsInvalid) {
    const QByteArray document =
        "{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"1971-01-01\"}}";
    writeNotification(document);
    startGateway();
    EXPECT_EQ(request(resetRequest("%1 is %2 no date")), kReset);
    EXPECT_EQ(notification(), document);
    EXPECT_EQ(request(resetRequest("")), kReset);
    EXPECT_EQ(notification(), document);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(u"%1 is %2 no date"_s),
                           u"3 DELETE notifications/n.json - -  204 0"_s, resetLine(QString()),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationTest, LogsPlaceholdersVerbatim) {
    site_.writeFile(u"notifications/%251%252.json"_s, "nothing");
    startGateway();
    EXPECT_EQ(request(resetRequest("%2%1", "/notifications/%1%2.json")), kRefused);
    const QString path = site_.rootPath(u"notifications/%251%252.json"_s);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"3 Reset " + path + u" [date - %2%1].",
                           u"5 [End] failed to initialize file (%251%252.json)."_s}));
}

TEST_P(NotificationTest, ReadsDateWithoutOffsetAsLocalTime) {
    const auto pending = [](const char* date) -> QByteArray {
        return QByteArray("{\"RemoteSetting\":{\"IsExist\":true,\"LastUpdated\":\"") + date +
               "\"}}";
    };
    gateway_.setEnvironment(u"TZ"_s, u"JST-9"_s);
    startGateway();
    writeNotification(pending("2024-06-01T03:00:00Z"));
    EXPECT_EQ(request(resetRequest("2024-06-01T12:00:00")), kReset);
    EXPECT_EQ(notification(), "{}");
    writeNotification(pending("2024-06-01T03:00:01Z"));
    EXPECT_EQ(request(resetRequest("2024-06-01T12:00:00")), kReset);
    EXPECT_EQ(notification(), pending("2024-06-01T03:00:01Z"));
}

TEST_P(NotificationTest, IgnoresRequestTimeout) {
    writeNotification("{\"a\":1}");
    Settings settings;
    settings.HTTPRequestTimeout = "0";
    startGateway(settings);
    EXPECT_EQ(request(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{}");
}

TEST_P(NotificationTest, RefusesDeleteWithoutResetHeader) {
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
        EXPECT_EQ(request(deleteRequest(header)), kRefused) << header.toStdString();
    }
    EXPECT_EQ(notification(), "{\"a\":1}");
    const QStringList logged = stopAndReadHandlerLog();
    EXPECT_EQ(logged.count(u"5 [End] invalid delete request."_s), qsizetype(std::size(headers)));
    EXPECT_EQ(logged.size(), qsizetype(std::size(headers)));
}

TEST_P(NotificationTest, TrimsDateAndUsesLastHeader) {
    const QByteArray document =
        "{\"RemoteExecution\":{\"IsExist\":true,\"LastUpdated\":\"2024-01-01\"}}";
    writeNotification(document);
    startGateway();
    EXPECT_EQ(request(deleteRequest("X-Quorin-Notification-Reset-Date: 2025-01-01\r\n"
                                    "X-Quorin-Notification-Reset-Date: \t2023-01-01 \t\r\n")),
              kReset);
    EXPECT_EQ(notification(), document);
    EXPECT_EQ(request("delete /notifications/n.json HTTP/1.1\r\n"
                      "\tX-Quorin-Notification-Reset-Date :2025-01-01\r\n\r\n"),
              kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(
        stopAndReadHandlerLog(),
        (QStringList{resetLine(u"2023-01-01"_s), u"3 DELETE notifications/n.json - -  204 0"_s,
                     resetLine(u"2025-01-01"_s), u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationTest, Sends404IfTargetIsNoFile) {
    writeNotification("{}");
    startGateway();
    EXPECT_EQ(request(resetRequest(kDate, "/notifications/none.json")), kMissing);
    EXPECT_EQ(request(resetRequest(kDate, "/notifications")), kMissing);
    EXPECT_EQ(request(resetRequest(kDate, "notifications/n.json")), kMissing);
    EXPECT_EQ(request(resetRequest(kDate, "/notifications/../notifications/n.json")),
              kReply400 + kReply500);
    EXPECT_EQ(staged(), QStringList());
}

TEST_P(NotificationTest, ResetsOnlyOnDelete) {
    writeNotification("{\"a\":1}");
    startGateway();
    for (const char* const method : {"PUT", "POST"}) {
        EXPECT_EQ(request(resetRequest().replace("DELETE", method)), kReply405 + kReply500);
    }
    EXPECT_THAT(request(resetRequest().replace("DELETE", "GET")).toStdString(),
                testing::EndsWith("\r\n\r\n{\"a\":1}"));
    EXPECT_EQ(notification(), "{\"a\":1}");
}

TEST_P(NotificationTest, ResetsFilesOfEveryFolder) {
    site_.writeFile(u"fwfiles/deep/n.json"_s, "{\"a\":1}");
    site_.writeFile(u"top.txt"_s, "[1]");
    site_.writeFile(u"patterns/p.xml"_s, "<p/>");
    startGateway();
    EXPECT_EQ(request(resetRequest(kDate, "/fwfiles/deep/n.json")), kReset);
    EXPECT_EQ(request(resetRequest(kDate, "/top.txt")), kReset);
    EXPECT_EQ(request(resetRequest(kDate, "/patterns/p.xml")), kRefused);
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

TEST_P(NotificationTest, KeepsMalformedDocumentAndSends500Twice) {
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

TEST_P(NotificationTest, ResetsDocumentOf5MiB) {
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
    EXPECT_EQ(request(resetRequest("2024-01-02")), kReset);
    const QByteArray after = document("{\"IsExist\":false,\"LastUpdated\":\"2024-01-02\"}");
    EXPECT_TRUE(notification() == after);
    EXPECT_TRUE(request(get("/notifications/n.json")) == wholeReply(after));
}

std::optional<QString> localeWithDecimalComma() {
    const std::string before = std::setlocale(LC_NUMERIC, nullptr);
    for (const char* const name : {"de_DE.UTF-8", "German_Germany.1252"}) {
        char half[8] = "";
        if (std::setlocale(LC_NUMERIC, name) != nullptr) {
            std::snprintf(half, sizeof half, "%.1f", 0.5);
            std::setlocale(LC_NUMERIC, before.c_str());
        }
        if (half == std::string("0,5")) {
            return QString::fromLatin1(name);
        }
    }
    return std::nullopt;
}

TEST_P(NotificationTest, WritesDecimalPointInEveryLocale) {
    const std::optional<QString> locale = localeWithDecimalComma();
    if (!locale) {
        GTEST_SKIP() << "no locale with a decimal comma is installed";
    }
    writeNotification("{" + kNewer + ",\"a\":0.5,\"b\":1234567.891,\"c\":-1.5e-7,\"d\":1e300}");
    gateway_.setEnvironment(u"LC_ALL"_s, *locale);             // read by Qt on Linux
    gateway_.setEnvironment(u"QUORIN_TEST_LOCALE"_s, *locale); // read by the test host
    startGateway();
    EXPECT_EQ(request(resetRequest()), kReset);
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
    EXPECT_GE(timer.elapsed(), earliestExpiry(5s).count());
    EXPECT_EQ(stopAndReadHandlerLog(), (QStringList{resetLine(), lockLine(), kFailed}));
    EXPECT_EQ(staged(), QStringList(u"n.json.lock"_s)) << "the holder must keep its lock";
}

TEST_P(NotificationTest, TakesLockReleasedDuringRetries) {
    writeNotification("{\"a\":1}");
    QLockFile holder(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(holder.tryLock());
    startGateway();
    Client client(site_.port(), GetParam());
    client.send(resetRequest());
    ASSERT_TRUE(site_.waitUntilLogged(resetLine()));
    // The request must wait beyond the first attempt of one second and leave the file unchanged.
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
    EXPECT_EQ(request(resetRequest()), kReset);
}

TEST_P(NotificationTest, BreaksLockOfDeadProcess) {
    writeNotification("{\"a\":1}");
    QFile lock(site_.stagingPath(u"n.json.lock"_s));
    ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
    lock.write("2000000000\nwriter\n\n\n\n"); // beyond the largest process id
    lock.close();
    startGateway();
    EXPECT_EQ(request(resetRequest()), kReset);
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
    EXPECT_EQ(request(resetRequest()), kReset);
    EXPECT_EQ(staged(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(Transports, NotificationTest, testing::ValuesIn(kTransports),
                         TransportName());

// Faults of the file system: they leave the file unchanged, and the next request after the fault is
// gone succeeds.
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

    void startGatewayUnder(const QStringList& command) {
        site_.writeSettings();
        gateway_.startUnder(command);
    }

    // Writes of the gateway that is started next fail half-way, on Windows only.
    void failWritesToStagingFile() {
        QFile file(failingCall());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("write " + QDir::fromNativeSeparators(site_.stagingPath(u"n.json"_s)).toUtf8());
        gateway_.setEnvironment(u"QUORIN_CALL_RECORD"_s, site_.temporaryPath() + u"/calls");
        gateway_.setEnvironment(u"QUORIN_FAILING_CALL"_s, failingCall());
    }
    void stopFailingWrites() const { QFile::remove(failingCall()); }
    QString failingCall() const { return site_.temporaryPath() + u"/failing-call"; }

    void expectSuccess() {
        EXPECT_EQ(request(resetRequest()), kReset);
        EXPECT_EQ(notification(), "{\"RemoteExecution\":{\"IsExist\":false,\"LastUpdated\":\"" +
                                      kDate + "\"}," + kNewer + "}");
        EXPECT_EQ(staged(), QStringList());
    }
};

TEST_P(NotificationFaultTest, DoesNotCreateMissingStagingFolder) {
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

TEST_P(NotificationFaultTest, KeepsFileInPlaceOfStagingFolder) {
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

TEST_P(NotificationFaultTest, FailsLockInReadOnlyStagingFolder) {
    const std::optional<QStringList> prefix = prefixBoundByPermissions();
    if (!prefix) {
        GTEST_SKIP() << "file permissions do not apply to this user";
    }
    forbidWriting(site_.stagingPath(QString()));
    startGatewayUnder(*prefix);
    expectFailure();
    allowWriting(site_.stagingPath(QString()));
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), lockLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, FailsWriteIfStagingFileIsFolder) {
    ASSERT_TRUE(QDir().mkpath(site_.stagingPath(u"n.json/folder"_s)));
    startGateway();
    expectFailure();
    EXPECT_EQ(staged(), QStringList(u"n.json"_s)) << "the lock must be released";
    ASSERT_TRUE(QDir(site_.stagingPath(u"n.json"_s)).removeRecursively());
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, FailsWriteOnFullDisk) {
    const QString stagingFile = site_.stagingPath(u"n.json"_s);
    if (kOnWindows) {
        failWritesToStagingFile();
    } else {
        const QString fullDisk = u"/dev/full"_s;
        if (!QFile::exists(fullDisk)) {
            GTEST_SKIP() << "this system has no " << fullDisk.toStdString();
        }
        ASSERT_TRUE(QFile::link(fullDisk, stagingFile));
    }
    startGateway();
    expectFailure();
    EXPECT_TRUE(QFileInfo(path()).isFile());
    EXPECT_FALSE(QFileInfo(path()).isSymLink());
    EXPECT_EQ(staged(), QStringList(u"n.json"_s)) << "the lock must be released";
    ASSERT_TRUE(QFile::remove(stagingFile));
    stopFailingWrites();
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, FailsAfterPartialWrite) {
    // The unit of the limit is 512 bytes or 1 KiB, depending on the shell.
    constexpr qsizetype size = 512 * 1024;
    writeNotification("{\"Filler\":\"" + QByteArray(size, 'x') + "\"," + kNewer + "}");
    if (kOnWindows) {
        failWritesToStagingFile();
        startGateway();
    } else {
        startGatewayUnder(
            {u"sh"_s, u"-c"_s, u"trap '' XFSZ; ulimit -f 200; exec \"$@\""_s, u"sh"_s});
    }
    expectFailure();
    EXPECT_GT(QFileInfo(site_.stagingPath(u"n.json"_s)).size(), 0)
        << "part of the document must have been written";
    EXPECT_LT(QFileInfo(site_.stagingPath(u"n.json"_s)).size(), size);
    // A smaller document fits, although the part remains.
    stopFailingWrites();
    writeNotification("{\"Filler\":\"" + QByteArray(size, 'x') + "\"}");
    EXPECT_EQ(request(resetRequest()), kReset);
    EXPECT_EQ(notification(), "{}");
    EXPECT_EQ(staged(), QStringList());
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, KeepsFileThatCannotBeReplaced) {
    QFile reader(path());
    if (kOnWindows) {
        ASSERT_TRUE(reader.open(QIODevice::ReadOnly)); // prevents the replacement of the file
        startGateway();
    } else {
        const std::optional<QStringList> prefix = prefixBoundByPermissions();
        if (!prefix) {
            GTEST_SKIP() << "file permissions do not apply to this user";
        }
        forbidWriting(notificationsFolder());
        startGatewayUnder(*prefix);
    }
    expectFailure();
    EXPECT_FALSE(staged().contains(u"n.json.lock"_s));
    reader.close();
    allowWriting(notificationsFolder());
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

// QFile opens a file so that it cannot be replaced on Windows, as virus scanners may do.
TEST_P(NotificationFaultTest, ReplacesFileOnceItIsReleased) {
    if (!kOnWindows) {
        GTEST_SKIP() << "an open file can be replaced on this system";
    }
    startGateway();
    QFile holder(path());
    ASSERT_TRUE(holder.open(QIODevice::ReadOnly));
    Client client(site_.port(), GetParam());
    client.send(resetRequest());
    ASSERT_TRUE(waitUntil([this] { return staged().contains(u"n.json"_s); }));
    holder.close();
    EXPECT_EQ(client.readToEnd(), kReset);
    EXPECT_EQ(staged(), QStringList());
    expectSuccess();
}

TEST_P(NotificationFaultTest, KeepsFileThatIsNotReleased) {
    if (!kOnWindows) {
        GTEST_SKIP() << "an open file can be replaced on this system";
    }
    startGateway();
    QFile holder(path());
    ASSERT_TRUE(holder.open(QIODevice::ReadOnly));
    expectFailure();
    EXPECT_FALSE(staged().contains(u"n.json.lock"_s));
    holder.close();
    expectSuccess();
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{resetLine(), kFailed, resetLine(),
                           u"3 DELETE notifications/n.json - -  204 0"_s}));
}

TEST_P(NotificationFaultTest, DoesNotCopyToOtherVolume) {
    if (kOnWindows) {
        GTEST_SKIP() << "no second volume is known on this system";
    }
    const QTemporaryDir elsewhere(u"/dev/shm/notifications-XXXXXX"_s);
    if (!elsewhere.isValid() || QStorageInfo(elsewhere.path()).device() ==
                                    QStorageInfo(site_.stagingPath(QString())).device()) {
        GTEST_SKIP() << "this system has no writable second volume";
    }
    const QByteArray document = notification();
    ASSERT_TRUE(QDir(notificationsFolder()).removeRecursively());
    ASSERT_TRUE(QFile::link(elsewhere.path(), notificationsFolder()));
    writeNotification(document);
    startGateway();
    expectFailure();
    EXPECT_FALSE(staged().contains(u"n.json.lock"_s));
    EXPECT_THAT(request(get("/notifications/n.json")).toStdString(),
                testing::EndsWith("\r\n\r\n" + document.toStdString()));
    ASSERT_TRUE(QFile::remove(notificationsFolder()));
    writeNotification(document);
    expectSuccess();
}

INSTANTIATE_TEST_SUITE_P(Transports, NotificationFaultTest, testing::Values(Transport::Plain),
                         TransportName());

// The manifest depends on the local address of the connection.
class ManifestTest : public NotificationTest {
protected:
    QByteArray requestFrom(const QString& address, const QByteArray& bytes) {
        Client client(site_.port(), GetParam(), QHostAddress(address));
        client.send(bytes);
        return client.readToEnd();
    }
};

TEST_P(ManifestTest, SelectsManifestOfLocalAddress) {
    site_.writeFile(u"update.json"_s, "general");
    site_.writeFile(u"update_127.0.0.1.json"_s, "first");
    site_.writeFile(u"update_127.0.0.2.json"_s, "second");
    startGateway();
    EXPECT_EQ(requestFrom(u"127.0.0.1"_s, get("/update.json")), streamedReply("first"));
    EXPECT_EQ(requestFrom(u"127.0.0.2"_s, get("/update.json")), streamedReply("second"));
    EXPECT_EQ(requestFrom(u"127.0.0.3"_s, get("/update.json")), streamedReply("general"));
}

TEST_P(ManifestTest, IgnoresManifestOfOtherAddress) {
    site_.writeFile(u"update_127.0.0.2.json"_s, "second");
    startGateway();
    EXPECT_EQ(requestFrom(u"127.0.0.1"_s, get("/update.json")), kMissing);
    // Under its own name it is an ordinary file.
    EXPECT_EQ(requestFrom(u"127.0.0.1"_s, get("/update_127.0.0.2.json")), streamedReply("second"));
    EXPECT_EQ(
        stopAndReadHandlerLog(),
        (QStringList{
            u"2 Received requesting update.json from "_s, u"2 Response update.json : update.json"_s,
            u"5 [End] " + underDocumentRoot(u"/update.json"_s) + u" does not exist or directory",
            u"2 Target file : update_127.0.0.2.json"_s,
            u"2 GET update_127.0.0.2.json - -  200 0"_s}));
}

TEST_P(ManifestTest, MatchesManifestNameCaseSensitively) {
    site_.writeFile(u"update_127.0.0.1.json"_s, "variant");
    site_.writeFile(u"Update.json"_s, "capital");
    site_.writeFile(u"update.json.bak"_s, "backup");
    startGateway();
    EXPECT_EQ(request(get("/Update.json")), streamedReply("capital"));
    EXPECT_EQ(request(get("/update.json.bak")), streamedReply("backup"));
    EXPECT_THAT(stopAndReadHandlerLog(),
                testing::Not(testing::Contains(u"2 Received requesting update.json from "_s)));
}

TEST_P(ManifestTest, Sends404IfVariantIsFolder) {
    site_.writeFile(u"update.json"_s, "general");
    site_.writeFile(u"update_127.0.0.1.json/a"_s, "inside");
    startGateway();
    EXPECT_EQ(request(get("/update.json")), kMissing);
}

TEST_P(ManifestTest, SendsManifestVariantAsNotification) {
    site_.writeFile(u"notifications/update_127.0.0.1.json"_s, "{}");
    startGateway();
    EXPECT_EQ(request(get("/notifications/update.json")), wholeReply("{}"));
}

TEST_P(ManifestTest, ResetsManifestVariant) {
    site_.writeFile(u"update.json"_s, "{\"general\":1}");
    site_.writeFile(u"update_127.0.0.1.json"_s, "{\"variant\":1}");
    startGateway();
    EXPECT_EQ(request(resetRequest(kDate, "/update.json")), kReset);
    EXPECT_EQ(site_.readFile(u"update.json"_s), "{\"general\":1}");
    EXPECT_EQ(site_.readFile(u"update_127.0.0.1.json"_s), "{}");
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"2 Received requesting update.json from "_s,
                           u"2 Response update.json : update_127.0.0.1.json"_s,
                           u"3 Reset " + site_.rootPath(u"update_127.0.0.1.json"_s) + u" [date - " +
                               QString::fromLatin1(kDate) + u"].",
                           u"3 DELETE update.json - -  204 0"_s}));
}

INSTANTIATE_TEST_SUITE_P(Transports, ManifestTest, testing::ValuesIn(kTransports), TransportName());

} // namespace
} // namespace quorin::test
