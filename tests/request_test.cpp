// Replies to single requests: methods, targets, api queries, refusals, limits, and their logs.

#include "support/client.h"
#include "support/deadline.h"
#include "support/serving_test.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class RequestTest : public ServingTest {};

INSTANTIATE_TEST_SUITE_P(Transports, RequestTest, testing::ValuesIn(transports()), TransportName());

TEST_P(RequestTest, RefusesOtherMethodTwice) {
    startGateway();
    EXPECT_EQ(ask("PUT /fwfiles/x HTTP/1.1\r\n\r\n"),
              "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n" + kReply500);
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({u"5 [End] unsupported http method was requested: PUT"_s}));
}

TEST_P(RequestTest, NamesRefusedMethod) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    for (const char* const method : {"HEAD", "POST", "CONNECT", "OPTIONS", "trace", "BREW"}) {
        EXPECT_EQ(ask(QByteArray(method) + " /fwfiles/a HTTP/1.1\r\n\r\n"),
                  "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n" + kReply500)
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
    EXPECT_EQ(ask("nonsense\r\n\r\n"), kReply500 + kReply500);
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({u"5 [End] Failed to parse http request. (127.0.0.1)"_s}));
}

TEST_P(RequestTest, ParsesFirstPieceOnly) {
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
    EXPECT_GE(timer.elapsed(), 1000);
    EXPECT_EQ(stopAndReadLog(), (QStringList{kRunStarts, u"5 [End] connect timeout"_s, kRunEnds,
                                             kDisconnectStarts, kDisconnectEnds}));
}

TEST_P(RequestTest, ClampsTimeoutTooLongForTimer) {
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

TEST_P(RequestTest, EndsWorkerIfClientDisconnects) {
    startGateway();
    Client(site_.port(), GetParam()).abort();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds));
    EXPECT_EQ(stopAndReadLog(),
              (QStringList{kRunStarts, kDisconnectStarts, kDisconnectEnds, kRunEnds}));
}

TEST_P(RequestTest, Sends404And500ForMissingFile) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/none")), kReply404 + kReply500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({u"5 [End] " + rooted(u"/fwfiles/none"_s) +
                                              u" does not exist or directory"}));
}

TEST_P(RequestTest, DoesNotLogMissingUpgradeSetting) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/QuorinUpgradeSetting.json")), kReply404 + kReply500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({}));
}

TEST_P(RequestTest, DoesNotServeFolders) {
    startGateway();
    for (const char* const target : {"/fwfiles", "/fwfiles/", "/", "/fwfiles/..", "/.."}) {
        EXPECT_EQ(ask(get(target)), kReply404 + kReply500) << target;
    }
}

TEST_P(RequestTest, RefusesParentFolder) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/../secret")),
              "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n" + kReply500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({u"5 [End] /fwfiles/../secret is invalid url"_s}));
}

TEST_P(RequestTest, RefusesDotFolder) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/./a")),
              "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n" + kReply500);
}

TEST_P(RequestTest, RefusesTargetWithoutLeadingSlash) {
    // Appended to the document root, these targets would name files next to it.
    site_.writeFile(u"../wwwroot-secret/file"_s, "secret");
    site_.writeFile(u"../wwwrootfile"_s, "secret");
    site_.writeFile(u"../wwwroot-secret/update.json"_s, "{}");
    startGateway();
    for (const char* const target : {"-secret/file", "file", "-secret/update.json", "",
                                     "api/WebApiCommScheme", "*", "http://localhost/fwfiles/a"}) {
        EXPECT_EQ(ask(get(target)), kReply404 + kReply500) << target;
    }
    EXPECT_THAT(stopAndReadLog(), testing::Contains(u"5 [End] " + rooted(u"-secret/file"_s) +
                                                    u" does not exist or directory"));
}

TEST_P(RequestTest, EncodesTargetAndDoesNotDecodeIt) {
    site_.writeFile(u"fwfiles/a%2520b.zip"_s, "encoded twice");
    site_.writeFile(u"fwfiles/a b.zip"_s, "plain blank");
    site_.writeFile(u"fwfiles/%C3%BC"_s, "umlaut");
    startGateway();
    EXPECT_THAT(ask(get("/fwfiles/a%20b.zip")).toStdString(),
                testing::EndsWith("\r\n\r\nencoded twice"));
    EXPECT_THAT(ask(get("/fwfiles/\u00fc")).toStdString(), testing::EndsWith("\r\n\r\numlaut"));
    EXPECT_EQ(ask(get("/fwfiles/x?y=1")), kReply404 + kReply500);
}

TEST_P(RequestTest, LogsPlaceholdersUnchanged) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/%1%2%20")), kReply404 + kReply500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({u"5 [End] " + rooted(u"/fwfiles/%251%252%2520"_s) +
                                              u" does not exist or directory"}));
}

TEST_P(RequestTest, RepliesCommunicationScheme) {
    startGateway();
    const QByteArray reply = "HTTP/1.1 200 OK\r\nContent-Length: 31\r\n"
                             "Content-Type: application/json\r\n\r\n"
                             "{\"CommunicationScheme\":\"https\"}";
    for (const char* const target :
         {"/api/WebApiCommScheme", "/api/WEBAPICOMMSCHEME", "/API/webApiCommScheme",
          "/fwfiles/../api/WebApiCommScheme", "/x/Api/WebApiCommScheme",
          "/api/WebApiCommScheme?a=b", "/api/%57ebApiCommScheme"}) {
        EXPECT_EQ(ask(get(target)), reply) << target;
    }
    EXPECT_EQ(ask("DELETE /api/WebApiCommScheme HTTP/1.1\r\n\r\n"), reply);
}

TEST_P(RequestTest, DoesNotLogApiQuery) {
    startGateway();
    EXPECT_THAT(ask(get("/api/WebApiCommScheme")).toStdString(),
                testing::StartsWith("HTTP/1.1 200"));
    EXPECT_EQ(stopAndReadLog(), logOfRequest({}));
}

TEST_P(RequestTest, RepliesEmptySchemeIfNone) {
    Settings settings;
    settings.RootUrl = "ftp://cloud";
    startGateway(settings);
    EXPECT_EQ(ask(get("/api/WebApiCommScheme")),
              "HTTP/1.1 200 OK\r\nContent-Length: 26\r\nContent-Type: application/json\r\n\r\n"
              "{\"CommunicationScheme\":\"\"}");
}

TEST_P(RequestTest, RepliesOrganizationIdUnchanged) {
    Settings settings;
    settings.OrganizationId = "\"M\u00fcller\" \\ 7";
    startGateway(settings);
    EXPECT_EQ(ask(get("/api/WebApiOrganizationId")),
              "HTTP/1.1 200 OK\r\nContent-Length: 37\r\nContent-Type: application/json\r\n\r\n"
              "{\"OrganizationId\":\"\\\"M\u00fcller\\\" \\\\ 7\"}");
}

TEST_P(RequestTest, Sends500OnceForUnknownApiQuery) {
    startGateway();
    for (const char* const target : {"/api/x", "/api/", "/api/WebApiCommScheme/x/../y"}) {
        const QByteArray reply = ask(get(target));
        EXPECT_TRUE(reply == kReply500 || reply.startsWith("HTTP/1.1 4"))
            << target << reply.toStdString();
    }
    EXPECT_EQ(ask(get("/api/x")), kReply500);
    EXPECT_EQ(ask(get("/api/")), kReply500);
}

TEST_P(RequestTest, TreatsNulInApiTargetAsUnknownQuery) {
    startGateway();
    for (const QByteArray& target : {QByteArray("/api/WebApi\0x", 13), QByteArray("/api/\0", 6)}) {
        EXPECT_EQ(ask(get(target)), kReply500) << target.toHex().toStdString();
    }
    EXPECT_EQ(stopAndReadHandlerLog(), QStringList());
    EXPECT_EQ(gateway_.errorOutput(), "");
}

TEST_P(RequestTest, RefusesOverlongPath) {
    startGateway();
    // Each of these bytes is nine characters of the path.
    const QByteArray folders = "//" + QByteArray(3'650, '\xff');
    EXPECT_EQ(ask(get(folders + "/update.json")), kReply404 + kReply500);
    EXPECT_EQ(ask(get(folders + "/a")), kReply404 + kReply500);
    const QString prefix = u"5 [End] " + rooted(u"//"_s) + u"%EF%BF%BD"_s.repeated(3'650);
    EXPECT_TRUE(stopAndReadHandlerLog() ==
                (QStringList{prefix + u"/update.json does not exist or directory",
                             prefix + u"/a does not exist or directory"}));
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
    const QByteArray reply = ask(get("/fwfiles/a") + get("/fwfiles/a"));
    EXPECT_EQ(reply.count("HTTP/1.1"), 1);
    EXPECT_THAT(reply.toStdString(), testing::EndsWith("\r\n\r\na"));
}

TEST_P(RequestTest, RefusesHeaderOf8MiBAsMalformed) {
    startGateway();
    // The gateway closes while the client is still sending, so its reply may be lost.
    Client client(site_.port(), GetParam());
    client.send("GET /fwfiles/a HTTP/1.1\r\nX: " + QByteArray(8 * 1024 * 1024, 'x') + "\r\n\r\n");
    ASSERT_TRUE(site_.waitUntilLogged(u"5 [End] Failed to parse http request. (127.0.0.1)"_s));
    EXPECT_EQ(ask(get("/fwfiles/a")), kReply404 + kReply500);
}

// Occupies workers of the gateway with connections that have not sent anything yet.
class Occupiers {
public:
    Occupiers(const Site& site, int count, Transport transport = Transport::Plain) {
        for (int i = 0; i < count; ++i) {
            clients_.push_back(std::make_unique<Client>(site.port(), transport));
        }
        EXPECT_TRUE(site.waitUntilLogged(kRunStarts, count));
    }

    Client& operator[](std::size_t index) { return *clients_[index]; }
    void leave() { clients_.clear(); }

private:
    std::vector<std::unique_ptr<Client>> clients_;
};

TEST_P(RequestTest, LimitsLargeFilesWhileWorkersAreActive) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip");
    site_.writeFile(u"fwfiles/a.ZIP"_s, "zip"); // the same file where letter case does not count
    site_.writeFile(u"fwfiles/a.exe"_s, "exe");
    site_.writeFile(u"fwfiles/a.zip.bak"_s, "bak");
    Settings settings;
    settings.MaxLargeFileRequest = "2";
    startGateway(settings);
    Occupiers occupiers(site_, 2, GetParam());
    const QByteArray refused = "HTTP/1.1 503 Service Unavailable\r\n\r\n" + kReply500;
    EXPECT_EQ(ask(get("/fwfiles/a.zip")), refused);
    EXPECT_EQ(ask(get("/fwfiles/a.ZIP")), refused);
    EXPECT_EQ(ask(get("/fwfiles/a.exe")), refused);
    EXPECT_EQ(ask(get("/fwfiles/none.exe")), refused);
    EXPECT_THAT(ask(get("/fwfiles/a.zip.bak")).toStdString(), testing::EndsWith("bak"));
    EXPECT_THAT(site_.logged(),
                testing::Contains(
                    u"2 Large file limitation. Requested [/fwfiles/a.zip] from [127.0.0.1]"_s));
    EXPECT_THAT(site_.logged(),
                testing::Not(testing::Contains(u"5 [End] Large file limitation."_s)));
    occupiers.leave();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds, 7));
    // A pool thread counts as active for a moment after its connection has closed.
    ASSERT_TRUE(waitUntil([&] { return ask(get("/fwfiles/a.zip")).endsWith("\r\n\r\nzip"); }));
}

TEST_P(RequestTest, DoesNotLimitLargeFilesWithoutQueue) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip");
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxLargeFileRequest = "1";
    startGateway(settings);
    Occupiers occupiers(site_, 4, GetParam());
    EXPECT_THAT(ask(get("/fwfiles/a.zip")).toStdString(), testing::EndsWith("\r\n\r\nzip"));
}

// Requests that arrive in one piece only over plain TCP.
class LongRequestTest : public RequestTest {};

INSTANTIATE_TEST_SUITE_P(Transports, LongRequestTest, testing::Values(Transport::Plain),
                         TransportName());

TEST_P(LongRequestTest, RefusesOverlongApiTarget) {
    startGateway();
    const QByteArray query = "/api/WebApiCommScheme";
    const QByteArray folder = '/' + QByteArray(32'000 - query.size(), 'a');
    EXPECT_EQ(ask(get(folder + query)), kReply404 + kReply500);
    EXPECT_THAT(ask(get(folder.chopped(1) + query)).toStdString(),
                testing::StartsWith("HTTP/1.1 200 OK\r\n"));
}

// Admission of connections. A waiting connection has not started TLS, so one transport suffices.
class AdmissionTest : public RequestTest {};

INSTANTIATE_TEST_SUITE_P(Transports, AdmissionTest, testing::Values(Transport::Plain),
                         TransportName());

TEST_P(AdmissionTest, Sends503BeyondLimitWithoutQueue) {
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxUserSession = "4";
    startGateway(settings);
    Occupiers occupiers(site_, 4);
    EXPECT_EQ(ask(get("/fwfiles/a")), "HTTP/1.1 503 Service Unavailable\r\n\r\n");
    ASSERT_TRUE(
        site_.waitUntilLogged(u"5 [End] too many tcp connection arrived MaxUserSession:4"_s));
    occupiers[0].send(get("/api/x"));
    EXPECT_EQ(occupiers[0].readToEnd(), kReply500);
}

TEST_P(AdmissionTest, QueuesConnectionBeyondLimit) {
    Settings settings;
    settings.MaxUserSession = "2";
    startGateway(settings);
    Occupiers occupiers(site_, 2);
    std::vector<std::unique_ptr<Client>> waiting;
    for (int i = 0; i < 3; ++i) {
        waiting.push_back(std::make_unique<Client>(site_.port()));
        waiting.back()->send(get("/fwfiles/" + QByteArray::number(i)));
    }
    EXPECT_EQ(site_.logged().count(kRunStarts), 2);
    occupiers.leave();
    for (const auto& client : waiting) {
        EXPECT_EQ(client->readToEnd(), kReply404 + kReply500);
    }
    EXPECT_EQ(site_.logged().count(kRunStarts), 5);
}

TEST_P(AdmissionTest, ServesQueueInOrder) {
    Settings settings;
    settings.MaxUserSession = "1";
    startGateway(settings);
    Occupiers occupiers(site_, 1);
    std::vector<std::unique_ptr<Client>> waiting;
    for (int i = 0; i < 5; ++i) {
        waiting.push_back(std::make_unique<Client>(site_.port()));
        waiting.back()->send(get("/fwfiles/" + QByteArray::number(i)));
    }
    occupiers.leave();
    for (const auto& client : waiting) {
        EXPECT_EQ(client->readToEnd(), kReply404 + kReply500);
    }
    QStringList missing = stopAndReadLog();
    missing.removeIf([](const QString& line) { return !line.startsWith(u'5'); });
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(missing.value(i), u"5 [End] " + rooted(u"/fwfiles/"_s) + QString::number(i) +
                                        u" does not exist or directory");
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

TEST_P(AdmissionTest, SendsPlain503IfTlsIsExpected) {
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxUserSession = "1";
    settings.HttpsEnabled = "true";
    startGateway(settings);
    Occupiers occupiers(site_, 1);
    EXPECT_EQ(ask("anything"), "HTTP/1.1 503 Service Unavailable\r\n\r\n");
}

TEST_P(AdmissionTest, SurvivesNullCertificate) {
    Settings settings;
    settings.HttpsEnabled = "true";
    settings.ConnectionTimeout = "2";
    startGateway(settings);
    Client client(site_.port(), GetParam());
    client.socket().setPeerVerifyMode(QSslSocket::VerifyNone);
    client.socket().startClientEncryption();
    EXPECT_FALSE(client.socket().waitForEncrypted(30'000));
    EXPECT_EQ(exchange(site_.port(), get("/api/x")).contains("HTTP"), false)
        << "no plain answer where TLS is expected";
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.logged(), testing::Contains(u"3 Listens - SSL(https) requests."_s));
}

} // namespace
} // namespace quorin::test
