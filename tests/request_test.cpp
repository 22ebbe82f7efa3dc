// What one request gets: methods, targets, api queries, refusals, limits, and the log of each.

#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway.h"
#include "support/site.h"

#include <QElapsedTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::test {

void PrintTo(Transport transport, std::ostream* out) {
    *out << (transport == Transport::Plain ? "Plain" : "Tls");
}

namespace {

const QByteArray kPlain500 = "HTTP/1.1 500 Internal Server Error\r\n\r\n";
const QByteArray kPlain404 = "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n";

const QString kRunStarts = u"2 [Start] void __cdecl Worker::run(void)"_s;
const QString kRunEnds = u"2 [End] void __cdecl Worker::run(void)"_s;
const QString kReadStarts = u"2 [Start] void __cdecl Worker::SslSocketReadyRead(void)"_s;
const QString kReadEnds = u"2 [End] void __cdecl Worker::SslSocketReadyRead(void)"_s;
const QString kDisconnectStarts = u"2 [Start] void __cdecl Worker::SslSocketDisconnected(void)"_s;
const QString kDisconnectEnds = u"2 [End] void __cdecl Worker::SslSocketDisconnected(void)"_s;

class RequestTest : public testing::Test {
protected:
    void startGateway(const Settings& settings = {}) {
        site_.writeSettings(settings);
        gateway_.start();
    }

    QByteArray ask(const QByteArray& request) { return exchange(site_.port(), request); }

    // Stops the gateway; what its workers logged. The quit's own lines may come between theirs.
    QStringList stopAndReadLog() {
        EXPECT_EQ(gateway_.stop(), 0);
        QStringList logged = site_.logged();
        logged = logged.mid(logged.indexOf(kRunStarts));
        logged.removeIf([](const QString& line) {
            return line == u"3 quit command recieved"_s ||
                   line.startsWith(u"3 Quorin Gateway Http Server End"_s);
        });
        return logged;
    }

    // The log of a connection that the gateway closes, with `lines` between reading and its end.
    static QStringList logOfRequest(const QStringList& lines) {
        return QStringList{kRunStarts, kReadStarts} + lines +
               QStringList{kReadEnds, kRunEnds, kDisconnectStarts, kDisconnectEnds};
    }

    QString rooted(const QString& target) const {
        return site_.rootPath(QString()).chopped(1) + target;
    }

    Site site_;
    Gateway gateway_{site_};
};

TEST_F(RequestTest, otherMethodsAreRefusedTwice) {
    startGateway();
    EXPECT_EQ(ask("PUT /fwfiles/x HTTP/1.1\r\n\r\n"),
              "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n" + kPlain500);
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({u"5 [End] unsupported http method was requested: PUT"_s}));
}

TEST_F(RequestTest, everyMethodButTwoIsRefusedByItsName) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    for (const char* const method : {"HEAD", "POST", "CONNECT", "OPTIONS", "trace", "BREW"}) {
        EXPECT_EQ(ask(QByteArray(method) + " /fwfiles/a HTTP/1.1\r\n\r\n"),
                  "HTTP/1.1 405 Method Not Allowed\r\nConnection: close\r\n\r\n" + kPlain500)
            << method;
    }
    QStringList refused = stopAndReadLog();
    refused.removeIf([](const QString& line) { return !line.startsWith(u'5'); });
    const QString text = u"5 [End] unsupported http method was requested: "_s;
    EXPECT_EQ(refused, (QStringList{text + u"HEAD", text + u"POST", text + u"CONNECT",
                                    text + u"OPTIONS", text + u"TRACE", text + u"UNKNOWN"}));
}

TEST_F(RequestTest, whatCannotBeParsedGets500Twice) {
    startGateway();
    EXPECT_EQ(ask("nonsense\r\n\r\n"), kPlain500 + kPlain500);
    EXPECT_EQ(stopAndReadLog(),
              logOfRequest({u"5 [End] Failed to parse http request. (127.0.0.1)"_s}));
}

TEST_F(RequestTest, aRequestInTwoPiecesIsJudgedByTheFirst) {
    startGateway();
    Client client(site_.port());
    client.send("GET /fwfiles/a HTTP/1.1\r\nHost");
    EXPECT_EQ(client.readToEnd(), kPlain500 + kPlain500);
}

TEST_F(RequestTest, aRequestThatNeverComesTimesOut) {
    Settings settings;
    settings.ConnectionTimeout = "1";
    startGateway(settings);
    QElapsedTimer timer;
    timer.start();
    Client client(site_.port());
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_GE(timer.elapsed(), 1000);
    EXPECT_EQ(stopAndReadLog(), (QStringList{kRunStarts, u"5 [End] connect timeout"_s, kRunEnds,
                                             kDisconnectStarts, kDisconnectEnds}));
}

TEST_F(RequestTest, aTimeoutTooLongForATimerIsClampedAndDoesNotFireAtOnce) {
    Settings settings;
    settings.ConnectionTimeout = "2147483647";
    settings.HTTPRequestTimeout = "2147483647";
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway(settings);
    Client client(site_.port());
    ASSERT_TRUE(site_.waitUntilLogged(kRunStarts));
    client.send(get("/fwfiles/a"));
    EXPECT_THAT(client.readToEnd().toStdString(), testing::EndsWith("\r\n\r\na"));
}

TEST_F(RequestTest, aClientThatLeavesWithoutARequestEndsItsWorker) {
    startGateway();
    Client(site_.port()).abort();
    ASSERT_TRUE(site_.waitUntilLogged(kRunEnds));
    EXPECT_EQ(stopAndReadLog(),
              (QStringList{kRunStarts, kDisconnectStarts, kDisconnectEnds, kRunEnds}));
}

TEST_F(RequestTest, aMissingFileGets404AndThen500) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/none")), kPlain404 + kPlain500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({u"5 [End] " + rooted(u"/fwfiles/none"_s) +
                                              u" does not exist or directory"}));
}

TEST_F(RequestTest, theMissingUpgradeSettingIsNotLogged) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/QuorinUpgradeSetting.json")), kPlain404 + kPlain500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({}));
}

TEST_F(RequestTest, foldersAreNotServed) {
    startGateway();
    for (const char* const target : {"/fwfiles", "/fwfiles/", "/", "/fwfiles/..", "/.."}) {
        EXPECT_EQ(ask(get(target)), kPlain404 + kPlain500) << target;
    }
}

TEST_F(RequestTest, patternsThatLeaveAFolderAreRefused) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/../secret")),
              "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n" + kPlain500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({u"5 [End] /fwfiles/../secret is invalid url"_s}));
}

TEST_F(RequestTest, aDotFolderIsRefusedToo) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/./a")),
              "HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n" + kPlain500);
}

TEST_F(RequestTest, aTargetWithoutItsSlashNamesNothingAlsoWhereTheFileExists) {
    // Put together with the document root these would be files beside it.
    site_.writeFile(u"../wwwroot-secret/file"_s, "secret");
    site_.writeFile(u"../wwwrootfile"_s, "secret");
    site_.writeFile(u"../wwwroot-secret/update.json"_s, "{}");
    startGateway();
    for (const char* const target : {"-secret/file", "file", "-secret/update.json", "",
                                     "api/WebApiCommScheme", "*", "http://localhost/fwfiles/a"}) {
        EXPECT_EQ(ask(get(target)), kPlain404 + kPlain500) << target;
    }
    EXPECT_THAT(stopAndReadLog(), testing::Contains(u"5 [End] " + rooted(u"-secret/file"_s) +
                                                    u" does not exist or directory"));
}

TEST_F(RequestTest, targetsAreEncodedOnceMoreAndNeverDecoded) {
    site_.writeFile(u"fwfiles/a%2520b.zip"_s, "encoded twice");
    site_.writeFile(u"fwfiles/a b.zip"_s, "plain blank");
    site_.writeFile(u"fwfiles/%C3%BC"_s, "umlaut");
    startGateway();
    EXPECT_THAT(ask(get("/fwfiles/a%20b.zip")).toStdString(),
                testing::EndsWith("\r\n\r\nencoded twice"));
    EXPECT_THAT(ask(get("/fwfiles/\u00fc")).toStdString(), testing::EndsWith("\r\n\r\numlaut"));
    EXPECT_EQ(ask(get("/fwfiles/x?y=1")), kPlain404 + kPlain500);
}

TEST_F(RequestTest, placeholdersInATargetAreLoggedAsTheyStand) {
    startGateway();
    EXPECT_EQ(ask(get("/fwfiles/%1%2%20")), kPlain404 + kPlain500);
    EXPECT_EQ(stopAndReadLog(), logOfRequest({u"5 [End] " + rooted(u"/fwfiles/%251%252%2520"_s) +
                                              u" does not exist or directory"}));
}

// Each query with its reply, as bytes.
TEST_F(RequestTest, theCommunicationSchemeIsAnsweredAsJson) {
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

TEST_F(RequestTest, anApiQueryWritesNoLineOfItsOwn) {
    startGateway();
    EXPECT_THAT(ask(get("/api/WebApiCommScheme")).toStdString(),
                testing::StartsWith("HTTP/1.1 200"));
    EXPECT_EQ(stopAndReadLog(), logOfRequest({}));
}

TEST_F(RequestTest, withoutASchemeTheTextIsEmpty) {
    Settings settings;
    settings.RootUrl = "ftp://cloud";
    startGateway(settings);
    EXPECT_EQ(ask(get("/api/WebApiCommScheme")),
              "HTTP/1.1 200 OK\r\nContent-Length: 26\r\nContent-Type: application/json\r\n\r\n"
              "{\"CommunicationScheme\":\"\"}");
}

TEST_F(RequestTest, theOrganizationIdIsAnsweredAsItStandsInTheSettings) {
    Settings settings;
    settings.OrganizationId = "\"M\u00fcller\" \\ 7";
    startGateway(settings);
    EXPECT_EQ(ask(get("/api/WebApiOrganizationId")),
              "HTTP/1.1 200 OK\r\nContent-Length: 37\r\nContent-Type: application/json\r\n\r\n"
              "{\"OrganizationId\":\"\\\"M\u00fcller\\\" \\\\ 7\"}");
}

TEST_F(RequestTest, anUnknownApiQueryGets500OnceAndNoLine) {
    startGateway();
    for (const char* const target : {"/api/x", "/api/", "/api/WebApiCommScheme/x/../y"}) {
        const QByteArray reply = ask(get(target));
        EXPECT_TRUE(reply == kPlain500 || reply.startsWith("HTTP/1.1 4"))
            << target << reply.toStdString();
    }
    EXPECT_EQ(ask(get("/api/x")), kPlain500);
    EXPECT_EQ(ask(get("/api/")), kPlain500);
}

TEST_F(RequestTest, moreBytesThanOneRequestNeverStartASecond) {
    site_.writeFile(u"fwfiles/a"_s, QByteArray(3 * 1024 * 1024, 'a'));
    startGateway();
    Client client(site_.port());
    client.send(get("/fwfiles/a"));
    client.send(get("/fwfiles/a"));
    client.send(get("/fwfiles/a"));
    const QByteArray reply = client.readToEnd();
    EXPECT_EQ(reply.count("HTTP/1.1"), 1);
    EXPECT_EQ(reply.size(), reply.indexOf("\r\n\r\n") + 4 + 3 * 1024 * 1024);
    EXPECT_EQ(stopAndReadLog().count(kReadStarts), 1);
}

TEST_F(RequestTest, aPipelinedRequestInTheSamePieceIsTheBodyOfTheFirst) {
    site_.writeFile(u"fwfiles/a"_s, "a");
    startGateway();
    const QByteArray reply = ask(get("/fwfiles/a") + get("/fwfiles/a"));
    EXPECT_EQ(reply.count("HTTP/1.1"), 1);
    EXPECT_THAT(reply.toStdString(), testing::EndsWith("\r\n\r\na"));
}

TEST_F(RequestTest, aRequestBeyondTheLimitIsRefusedLikeAMalformedOne) {
    startGateway();
    Client client(site_.port());
    client.send("GET /fwfiles/a HTTP/1.1\r\nX: " + QByteArray(8 * 1024 * 1024, 'x') + "\r\n\r\n");
    EXPECT_THAT(client.readToEnd().toStdString(), testing::StartsWith(kPlain500.toStdString()));
}

// Occupies workers of the gateway: connections that have not sent anything yet.
class Occupiers {
public:
    Occupiers(const Site& site, int count) {
        for (int i = 0; i < count; ++i) {
            clients_.push_back(std::make_unique<Client>(site.port()));
        }
        EXPECT_TRUE(site.waitUntilLogged(kRunStarts, count));
    }

    Client& operator[](std::size_t index) { return *clients_[index]; }
    void leave() { clients_.clear(); }

private:
    std::vector<std::unique_ptr<Client>> clients_;
};

TEST_F(RequestTest, largeFilesAreLimitedWhileManyWorkersAreActive) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip");
    site_.writeFile(u"fwfiles/a.ZIP"_s, "ZIP");
    site_.writeFile(u"fwfiles/a.exe"_s, "exe");
    site_.writeFile(u"fwfiles/a.zip.bak"_s, "bak");
    Settings settings;
    settings.MaxLargeFileRequest = "2";
    startGateway(settings);
    Occupiers occupiers(site_, 2);
    const QByteArray refused = "HTTP/1.1 503 Service Unavailable\r\n\r\n" + kPlain500;
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

TEST_F(RequestTest, inLegacyModeLargeFilesAreNotLimited) {
    site_.writeFile(u"fwfiles/a.zip"_s, "zip");
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxLargeFileRequest = "1";
    startGateway(settings);
    Occupiers occupiers(site_, 4);
    EXPECT_THAT(ask(get("/fwfiles/a.zip")).toStdString(), testing::EndsWith("\r\n\r\nzip"));
}

TEST_F(RequestTest, inLegacyModeAConnectionBeyondTheLimitIsRefusedWith503) {
    Settings settings;
    settings.IsMadeClientRequestWaited = "false";
    settings.MaxUserSession = "4";
    startGateway(settings);
    Occupiers occupiers(site_, 4);
    EXPECT_EQ(ask(get("/fwfiles/a")), "HTTP/1.1 503 Service Unavailable\r\n\r\n");
    ASSERT_TRUE(
        site_.waitUntilLogged(u"5 [End] too many tcp connection arrived MaxUserSession:4"_s));
    occupiers[0].send(get("/api/x"));
    EXPECT_EQ(occupiers[0].readToEnd(), kPlain500);
}

TEST_F(RequestTest, inQueueModeAConnectionBeyondTheLimitWaitsForAThread) {
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
        EXPECT_EQ(client->readToEnd(), kPlain404 + kPlain500);
    }
    EXPECT_EQ(site_.logged().count(kRunStarts), 5);
}

TEST_F(RequestTest, waitingConnectionsAreServedInTheOrderOfTheirArrival) {
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
        EXPECT_EQ(client->readToEnd(), kPlain404 + kPlain500);
    }
    QStringList missing = stopAndReadLog();
    missing.removeIf([](const QString& line) { return !line.startsWith(u'5'); });
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(missing.value(i), u"5 [End] " + rooted(u"/fwfiles/"_s) + QString::number(i) +
                                        u" does not exist or directory");
    }
}

TEST_F(RequestTest, withoutWorkersNobodyIsServedAndQuitStillStops) {
    Settings settings;
    settings.MaxUserSession = "0";
    startGateway(settings);
    Client client(site_.port());
    client.send(get("/api/x"));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_EQ(site_.logged().count(kRunStarts), 0);
}

TEST_F(RequestTest, aNullCertificateLetsHandshakesFailAndTheGatewayLive) {
    Settings settings;
    settings.HttpsEnabled = "true";
    settings.ConnectionTimeout = "2";
    startGateway(settings);
    Client client(site_.port());
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
