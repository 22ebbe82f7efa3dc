// Requests and their replies and logs: methods, targets, API queries, refusals, limits.

#include "support/client.h"
#include "support/clients.h"
#include "support/deadline.h"
#include "support/serving_test.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace quorin::test {
namespace {

class RequestTest : public ServingTest {};

INSTANTIATE_TEST_SUITE_P(Transports, RequestTest, testing::ValuesIn(kTransports), TransportName());

TEST_P(RequestTest, RefusesPutWith405And500) {
    startGateway();
    EXPECT_EQ(request("PUT /fwfiles/x HTTP/1.1\r\n\r\n"), kReply405 + kReply500);
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({u"5 [End] unsupported http method was requested: PUT"_s}));
}

TEST_P(RequestTest, LogsNameOfRefusedMethod) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    for (const char* const method : {"HEAD", "POST", "CONNECT", "OPTIONS", "trace", "BREW"}) {
        EXPECT_EQ(request(QByteArray(method) + " /fwfiles/a HTTP/1.1\r\n\r\n"),
                  kReply405 + kReply500)
            << method;
    }
    QStringList refused = stopAndReadLog();
    refused.removeIf([](const QString& line) { return !line.startsWith(u'5'); });
    const QString text = u"5 [End] unsupported http method was requested: "_s;
    EXPECT_EQ(refused, (QStringList{text + u"HEAD", text + u"POST", text + u"CONNECT",
                                    text + u"OPTIONS", text + u"TRACE", text + u"UNKNOWN"}));
}

TEST_P(RequestTest, Sends500TwiceForMalformedRequest) {
    startGateway();
    EXPECT_EQ(request("nonsense\r\n\r\n"), kReply500 + kReply500);
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({u"5 [End] Failed to parse http request. (127.0.0.1)"_s}));
}

TEST_P(RequestTest, ParsesOnlyFirstSegmentOfRequest) {
    startGateway();
    Client client(site_.port(), GetParam());
    client.send("GET /fwfiles/a HTTP/1.1\r\nHost");
    EXPECT_EQ(client.readToEnd(), kReply500 + kReply500);
}

TEST_P(RequestTest, TimesOutWithoutRequest) {
    Settings settings;
    settings.ConnectionTimeout = "1";
    startGateway(settings);
    QElapsedTimer timer;
    timer.start();
    Client client(site_.port(), GetParam());
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_GE(timer.elapsed(), earliestExpiry(1s).count());
    EXPECT_EQ(stopAndReadLog(), (QStringList{kRunStarts, u"5 [End] connect timeout"_s, kRunEnds,
                                             kDisconnectStarts, kDisconnectEnds}));
}

TEST_P(RequestTest, ClampsTimeoutBeyondTimerRange) {
    Settings settings;
    settings.ConnectionTimeout = "2147483647";
    settings.HTTPRequestTimeout = "2147483647";
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway(settings);
    Client client(site_.port(), GetParam());
    ASSERT_TRUE(site_.waitUntilLogged(kRunStarts));
    client.send(get("/fwfiles/a"));
    EXPECT_THAT(client.readToEnd().toStdString(), testing::EndsWith("\r\n\r\na"));
}

TEST_P(RequestTest, EndsWorkerWhenSilentClientDisconnects) {
    startGateway();
    Client(site_.port(), GetParam()).abort();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds));
    EXPECT_EQ(stopAndReadLog(),
              (QStringList{kRunStarts, kDisconnectStarts, kDisconnectEnds, kRunEnds}));
}

TEST_P(RequestTest, Sends404And500ForMissingFile) {
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/none")), kReply404 + kReply500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({u"5 [End] " + underDocumentRoot(u"/fwfiles/none"_s) +
                                              u" does not exist or directory"}));
}

TEST_P(RequestTest, DoesNotLogMissingUpgradeSetting) {
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/QuorinUpgradeSetting.json")), kReply404 + kReply500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({}));
}

TEST_P(RequestTest, DoesNotServeFolders) {
    startGateway();
    for (const char* const target : {"/fwfiles", "/fwfiles/", "/", "/fwfiles/..", "/.."}) {
        EXPECT_EQ(request(get(target)), kReply404 + kReply500) << target;
    }
}

TEST_P(RequestTest, RefusesParentFolderInTarget) {
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/../secret")), kReply400 + kReply500);
    EXPECT_EQ(request(get("/api/WebApiCommScheme/x/../y")), kReply400 + kReply500);
    EXPECT_EQ(stopAndReadHandlerLog(),
              (QStringList{u"5 [End] /fwfiles/../secret is invalid url"_s,
                           u"5 [End] /api/WebApiCommScheme/x/../y is invalid url"_s}));
}

TEST_P(RequestTest, RefusesDotFolderInTarget) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/./a")), kReply400 + kReply500);
}

TEST_P(RequestTest, Sends404ForTargetWithoutLeadingSlash) {
    // Appended to the document root without a slash, some targets name existing files outside it.
    site_.writeFile(u"../wwwroot-secret/file"_s, "secret");
    site_.writeFile(u"../wwwrootfile"_s, "secret");
    site_.writeFile(u"../wwwroot-secret/update.json"_s, "{}");
    startGateway();
    for (const char* const target : {"-secret/file", "file", "-secret/update.json", "",
                                     "api/WebApiCommScheme", "*", "http://localhost/fwfiles/a"}) {
        EXPECT_EQ(request(get(target)), kReply404 + kReply500) << target;
    }
    EXPECT_THAT(stopAndReadLog(),
                testing::Contains(u"5 [End] " + underDocumentRoot(u"-secret/file"_s) +
                                  u" does not exist or directory"));
}

TEST_P(RequestTest, EncodesTargetAgainAndNeverDecodesIt) {
    site_.writeFile(u"fwfiles/a%2520b.zip"_s, "encoded twice");
    site_.writeFile(u"fwfiles/a b.zip"_s, "plain space");
    site_.writeFile(u"fwfiles/%C3%BC"_s, "umlaut");
    startGateway();
    EXPECT_THAT(request(get("/fwfiles/a%20b.zip")).toStdString(),
                testing::EndsWith("\r\n\r\nencoded twice"));
    EXPECT_THAT(request(get("/fwfiles/\u00fc")).toStdString(), testing::EndsWith("\r\n\r\numlaut"));
    EXPECT_EQ(request(get("/fwfiles/x?y=1")), kReply404 + kReply500);
}

TEST_P(RequestTest, LogsPlaceholdersOfTargetVerbatim) {
    startGateway();
    EXPECT_EQ(request(get("/fwfiles/%1%2%20")), kReply404 + kReply500);
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({u"5 [End] " + underDocumentRoot(u"/fwfiles/%251%252%2520"_s) +
                            u" does not exist or directory"}));
}

TEST_P(RequestTest, ReturnsCommunicationSchemeAsJson) {
    startGateway();
    const QByteArray reply = "HTTP/1.1 200 OK\r\nContent-Length: 31\r\n"
                             "Content-Type: application/json\r\n\r\n"
                             "{\"CommunicationScheme\":\"https\"}";
    for (const char* const target :
         {"/api/WebApiCommScheme", "/api/WEBAPICOMMSCHEME", "/API/webApiCommScheme",
          "/fwfiles/../api/WebApiCommScheme", "/x/Api/WebApiCommScheme",
          "/api/WebApiCommScheme?a=b", "/api/%57ebApiCommScheme"}) {
        EXPECT_EQ(request(get(target)), reply) << target;
    }
    EXPECT_EQ(request("DELETE /api/WebApiCommScheme HTTP/1.1\r\n\r\n"), reply);
}

TEST_P(RequestTest, DoesNotLogApiQuery) {
    startGateway();
    EXPECT_THAT(request(get("/api/WebApiCommScheme")).toStdString(),
                testing::StartsWith("HTTP/1.1 200"));
    EXPECT_EQ(stopAndReadLog(), logOfRequest({}));
}

TEST_P(RequestTest, ReturnsEmptySchemeForOtherRootUrl) {
    Settings settings;
    settings.RootUrl = "ftp://cloud";
    startGateway(settings);
    EXPECT_EQ(request(get("/api/WebApiCommScheme")),
              "HTTP/1.1 200 OK\r\nContent-Length: 26\r\nContent-Type: application/json\r\n\r\n"
              "{\"CommunicationScheme\":\"\"}");
}

TEST_P(RequestTest, ReturnsOrganizationIdFromSettings) {
    Settings settings;
    settings.OrganizationId = "\"M\u00fcller\" \\ 7";
    startGateway(settings);
    EXPECT_EQ(request(get("/api/WebApiOrganizationId")),
              "HTTP/1.1 200 OK\r\nContent-Length: 37\r\nContent-Type: application/json\r\n\r\n"
              "{\"OrganizationId\":\"\\\"M\u00fcller\\\" \\\\ 7\"}");
}

TEST_P(RequestTest, Sends500OnceForUnknownApiQuery) {
    startGateway();
    for (const char* const target : {"/api/x", "/api/"}) {
        EXPECT_EQ(request(get(target)), kReply500) << target;
    }
    EXPECT_EQ(stopAndReadHandlerLog(), QStringList());
}

TEST_P(RequestTest, ServesOneRequestPerConnection) {
    site_.writeFile(u"fwfiles/a"_s, QByteArray(3 * 1024 * 1024, 'a'));
    startGateway();
    Client client(site_.port(), GetParam());
    client.send(get("/fwfiles/a"));
    client.send(get("/fwfiles/a"));
    client.send(get("/fwfiles/a"));
    const QByteArray reply = client.readToEnd();
    EXPECT_EQ(reply.count("HTTP/1.1"), 1);
    EXPECT_EQ(reply.size(), reply.indexOf("\r\n\r\n") + 4 + 3 * 1024 * 1024);
    EXPECT_EQ(stopAndReadLog().count(kReadStarts), 1);
}

TEST_P(RequestTest, TreatsPipelinedRequestAsBody) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    const QByteArray reply = request(get("/fwfiles/a") + get("/fwfiles/a"));
    EXPECT_EQ(reply.count("HTTP/1.1"), 1);
    EXPECT_THAT(reply.toStdString(), testing::EndsWith("\r\n\r\na"));
}

TEST_P(RequestTest, RefusesOversizedHeaderAsMalformed) {
    startGateway();
    // The gateway closes the connection while the client still sends, so the reply may be lost.
    Client client(site_.port(), GetParam());
    client.send("GET /fwfiles/a HTTP/1.1\r\nX: " + QByteArray(8 * 1024 * 1024, 'x') + "\r\n\r\n");
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] Failed to parse http request. (127.0.0.1)"_s));
    EXPECT_EQ(request(get("/fwfiles/a")), kReply404 + kReply500);
}

TEST_P(RequestTest, TreatsNulInApiTargetAsUnknownQuery) {
    startGateway();
    for (const QByteArray& target : {QByteArray("/api/WebApi\0x", 13), QByteArray("/api/\0", 6)}) {
        EXPECT_EQ(request(get(target)), kReply500) << target.toHex().toStdString();
    }
    EXPECT_EQ(stopAndReadHandlerLog(), QStringList());
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_P(RequestTest, RefusesOverlongPath) {
    startGateway();
    // Each of these bytes is nine characters of the path.
    const QByteArray folders = "//" + QByteArray(3'650, '\xff');
    EXPECT_EQ(request(get(folders + "/update.json")), kReply404 + kReply500);
    EXPECT_EQ(request(get(folders + "/a")), kReply404 + kReply500);
    const QString prefix =
        u"5 [End] " + underDocumentRoot(u"//"_s) + u"%EF%BF%BD"_s.repeated(3'650);
    EXPECT_TRUE(stopAndReadHandlerLog() ==
                (QStringList{prefix + u"/update.json does not exist or directory",
                             prefix + u"/a does not exist or directory"}));
}

// Occupies `count` workers of a gateway that was just started, with clients that send nothing.
Clients occupyWorkers(const Site& site, int count, Transport transport = Transport::Plain) {
    Clients clients(site.port(), count, transport);
    EXPECT_TRUE(site.waitUntilLogged(kRunStarts, count));
    return clients;
}

TEST_P(RequestTest, LimitsLargeFilesWhileWorkersAreBusy) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip");
    site_.writeFile(u"fwfiles/a.ZIP"_s, "zip"); // the same file on case-insensitive systems
    site_.writeFile(u"fwfiles/a.exe"_s, "exe");
    site_.writeFile(u"fwfiles/a.zip.bak"_s, "bak");
    Settings settings;
    settings.MaxLargeFileRequest = "2";
    startGateway(settings);
    Clients idle = occupyWorkers(site_, 2, GetParam());
    const QByteArray refused = kReply503 + kReply500;
    EXPECT_EQ(request(get("/fwfiles/a.zip")), refused);
    EXPECT_EQ(request(get("/fwfiles/a.ZIP")), refused);
    EXPECT_EQ(request(get("/fwfiles/a.exe")), refused);
    EXPECT_EQ(request(get("/fwfiles/none.exe")), refused);
    EXPECT_THAT(request(get("/fwfiles/a.zip.bak")).toStdString(), testing::EndsWith("bak"));
    EXPECT_THAT(site_.logged(),
                testing::Contains(
                    u"2 Large file limitation. Requested [/fwfiles/a.zip] from [127.0.0.1]"_s));
    EXPECT_THAT(site_.logged(),
                testing::Not(testing::Contains(u"5 [End] Large file limitation."_s)));
    idle.close();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, 7));
    // The pool counts a thread as active until shortly after its connection was closed.
    ASSERT_TRUE(waitUntil([&] { return request(get("/fwfiles/a.zip")).endsWith("\r\n\r\nzip"); }));
}

TEST_P(RequestTest, DoesNotLimitLargeFilesInLegacyMode) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip");
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxLargeFileRequest = "1";
    startGateway(settings);
    Clients idle = occupyWorkers(site_, 4, GetParam());
    EXPECT_THAT(request(get("/fwfiles/a.zip")).toStdString(), testing::EndsWith("\r\n\r\nzip"));
}

// Requests that arrive in one piece only over plain TCP.
class LongRequestTest : public RequestTest {};

INSTANTIATE_TEST_SUITE_P(Transports, LongRequestTest, testing::Values(Transport::Plain),
                         TransportName());

TEST_P(LongRequestTest, RefusesOverlongApiTarget) {
    startGateway();
    const QByteArray query = "/api/WebApiCommScheme";
    const QByteArray folder = '/' + QByteArray(32'000 - query.size(), 'a');
    EXPECT_EQ(request(get(folder + query)), kReply404 + kReply500);
    EXPECT_THAT(request(get(folder.chopped(1) + query)).toStdString(),
                testing::StartsWith("HTTP/1.1 200 OK\r\n"));
}

// Admission of connections. It precedes all data on a connection, so the transport is irrelevant.
class AdmissionTest : public RequestTest {};

INSTANTIATE_TEST_SUITE_P(Transports, AdmissionTest, testing::Values(Transport::Plain),
                         TransportName());

TEST_P(AdmissionTest, RefusesConnectionBeyondLimitInLegacyMode) {
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxUserSession = "4";
    startGateway(settings);
    Clients idle = occupyWorkers(site_, 4);
    EXPECT_EQ(request(get("/fwfiles/a")), kReply503);
    ASSERT_TRUE(
        site_.waitUntilLogged(u"5 [End] too many tcp connection arrived MaxUserSession:4"_s));
    idle[0].send(get("/api/x"));
    EXPECT_EQ(idle[0].readToEnd(), kReply500);
    idle.close();
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_P(AdmissionTest, QueuesConnectionBeyondLimit) {
    Settings settings;
    settings.MaxUserSession = "2";
    startGateway(settings);
    Clients idle = occupyWorkers(site_, 2);
    Clients queued(site_.port(), 3);
    queued.send(get("/fwfiles/none"));
    idle.close();
    for (const auto& client : queued) {
        EXPECT_EQ(client->readToEnd(), kReply404 + kReply500);
    }
    const QStringList logged = site_.logged();
    EXPECT_EQ(logged.count(kRunStarts), 5);
    const QStringList untilFirstEnd = logged.mid(0, logged.indexOf(kRunEnds));
    EXPECT_EQ(untilFirstEnd.count(kRunStarts), 2);
}

TEST_P(AdmissionTest, ServesQueuedConnectionsInOrder) {
    Settings settings;
    settings.MaxUserSession = "1";
    startGateway(settings);
    Clients idle = occupyWorkers(site_, 1);
    Clients queued(site_.port(), 5);
    for (int i = 0; i < 5; ++i) {
        queued[i].send(get("/fwfiles/" + QByteArray::number(i)));
    }
    idle.close();
    for (const auto& client : queued) {
        EXPECT_EQ(client->readToEnd(), kReply404 + kReply500);
    }
    QStringList missing = stopAndReadLog();
    missing.removeIf([](const QString& line) { return !line.startsWith(u'5'); });
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(missing.value(i), u"5 [End] " + underDocumentRoot(u"/fwfiles/"_s) +
                                        QString::number(i) + u" does not exist or directory");
    }
}

TEST_P(AdmissionTest, StopsOnQuitWithoutWorkers) {
    Settings settings;
    settings.MaxUserSession = "0";
    startGateway(settings);
    Client client(site_.port(), GetParam());
    client.send(get("/api/x"));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_EQ(site_.logged().count(kRunStarts), 0);
}

TEST_P(AdmissionTest, SendsPlainRefusalIfHttpsIsEnabled) {
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxUserSession = "1";
    settings.HttpsEnabled = "true";
    startGateway(settings);
    Clients idle = occupyWorkers(site_, 1);
    EXPECT_EQ(request("anything"), kReply503);
}

TEST_P(AdmissionTest, FailsHandshakesWithoutCertificate) {
    Settings settings;
    settings.HttpsEnabled = "true";
    settings.ConnectionTimeout = "2";
    startGateway(settings);
    Client client(site_.port(), GetParam());
    client.socket().setPeerVerifyMode(QSslSocket::VerifyNone);
    client.socket().startClientEncryption();
    EXPECT_FALSE(client.socket().waitForEncrypted(30'000));
    EXPECT_FALSE(exchange(site_.port(), get("/api/x")).contains("HTTP"))
        << "must not reply in plain text if HTTPS is enabled";
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.logged(), testing::Contains(u"3 Listens - SSL(https) requests."_s));
}

} // namespace
} // namespace quorin::test
