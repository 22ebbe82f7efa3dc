// HTTPS with the clients openssl and curl, and with misbehaving clients.

#include "support/certificate_store.h"
#include "support/client.h"
#include "support/deadline.h"
#include "support/external_program.h"
#include "support/serving_test.h"
#include "support/system.h"

#include <QElapsedTimer>
#include <QFile>
#include <QSslCertificate>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace quorin::test {
namespace {

using testing::HasSubstr;
using testing::Not;

QByteArray threeBytesInHex(qsizetype number) {
    return QByteArray::number(number, 16).rightJustified(6, '0');
}

// Returns the TLS 1.2 message that contains `certificates`, which are in PEM, in hexadecimal.
QByteArray certificateMessage(const std::vector<QByteArray>& certificates) {
    QByteArray list;
    for (const QByteArray& certificate : certificates) {
        const QByteArray der = QSslCertificate(certificate).toDer();
        list += threeBytesInHex(der.size()) + der.toHex();
    }
    const qsizetype size = list.size() / 2;
    return "0b" + threeBytesInHex(size + 3) + threeBytesInHex(size) + list;
}

class HttpsTest : public testing::Test {
protected:
    // Starts the gateway with a certificate for "localhost" that openssl() and curl() trust.
    void startGateway(const Settings& settings = {}) {
        trust(installCertificate(site_, settings.GatewayAddress));
        startWithInstalledCertificate(settings);
    }

    // Starts the gateway with a certificate for "localhost" that an intermediate authority has
    // issued. openssl() and curl() trust only the root authority.
    IssuedCertificate startWithIssuedCertificate(IntermediatePlace place,
                                                 const std::string& digest = "SHA256") {
        gateway_.setEnvironment(u"SSL_CERT_DIR"_s, authorityFolder(site_));
        IssuedCertificate issued =
            installIssuedCertificate(site_, Settings().GatewayAddress, place, digest);
        trust(issued.root);
        startWithInstalledCertificate();
        return issued;
    }

    // Makes openssl() and curl() trust only `authority`, in PEM.
    void trust(const QByteArray& authority) const {
        QFile file(caFile_);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(authority);
    }

    void startWithInstalledCertificate(Settings settings = {}) {
        settings.HttpsEnabled = "true";
        site_.writeSettings(settings);
        gateway_.start();
        // A reply shows that the gateway is listening.
        EXPECT_EQ(exchange(site_.port(), get("/api/x"), Transport::Tls), kReply500);
    }

    std::string openssl(const QStringList& options, const QByteArray& input) const {
        return runProgram(u"openssl"_s,
                          QStringList{u"s_client"_s, u"-connect"_s,
                                      u"localhost:%1"_s.arg(site_.port()), u"-CAfile"_s,
                                      pathForProgram(caFile_)} +
                              options,
                          input)
            .toStdString();
    }

    // Returns the TLS messages of a connection with TLS 1.2, in which certificates are not
    // encrypted, in hexadecimal.
    QByteArray messagesInHex() const {
        const std::string shown =
            openssl({u"-tls1_2"_s, u"-ign_eof"_s, u"-msg"_s, u"-quiet"_s}, get("/fwfiles/none"));
        QByteArray hex;
        for (const QByteArray& line : QByteArray::fromStdString(shown).split('\n')) {
            if (line.startsWith("    ")) { // a line of a dump
                hex += line.simplified().replace(" ", "");
            }
        }
        return hex;
    }

    std::string curl(const QString& host) const {
        return runProgram(u"curl"_s, {u"-sS"_s, u"--max-time"_s, u"30"_s, u"--cacert"_s,
                                      pathForProgram(caFile_),
                                      u"https://%1:%2/fwfiles/a"_s.arg(host).arg(site_.port())})
            .toStdString();
    }

    Site site_;
    Gateway gateway_{site_};
    const QString caFile_ = site_.temporaryPath() + u"/authority.pem";
    const QString session_ = site_.temporaryPath() + u"/session"; // of openssl
};

TEST_F(HttpsTest, LogsCertificateSearch) {
    startGateway();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), ""); // the test host reports a key handle that is not freed
    const QStringList logged = site_.logged();
    EXPECT_EQ(logged.mid(3, 6),
              (QStringList{
                  u"3 Replying communication scheme for WebAPI - https"_s,
                  u"3 Listens - SSL(https) requests."_s,
                  u"3 Try to search server certificate that have this name as subject "
                  u"alternative names or common name. [localhost]"_s,
                  u"3 Found certificate with a matching subject name (Serial Number - 01)"_s,
                  u"3 Key Algorithm is ECDSA."_s,
                  u"3 Detect certificate for HTTPS server"_s,
              }));
}

TEST_F(HttpsTest, StartsWithoutCertificateAndLogsErrors) {
    Settings settings;
    settings.HttpsEnabled = "true";
    site_.writeSettings(settings);
    gateway_.start();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.logged(), testing::Contains(u"5 Failed to find valid certificate."_s));
    if (!kOnWindows) { // The machine always has these stores.
        EXPECT_THAT(site_.logged(), testing::IsSupersetOf({
                                        u"5 Failed to open store (WebHosting)."_s,
                                        u"5 Failed to open store (My)."_s,
                                    }));
    }
}

TEST_F(HttpsTest, RefusesKeyThatCannotBeExported) {
    Settings settings;
    settings.HttpsEnabled = "true";
    installCertificate(site_, settings.GatewayAddress);
    if (kOnWindows) { // read by the test host
        gateway_.setEnvironment(u"QUORIN_TEST_REFUSES_PLAIN_EXPORT"_s, u"1"_s);
    } else { // other users can read the key
        const QString path =
            site_.appDataPath(u"Vemo/Quorin5/certificates/WebHosting/gateway.pem"_s);
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadOther));
    }
    site_.writeSettings(settings);
    gateway_.start();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
    EXPECT_THAT(site_.logged(), testing::IsSupersetOf({
                                    u"4 Failed to export private key."_s,
                                    u"5 Failed to find valid certificate."_s,
                                }));
}

TEST_F(HttpsTest, AcceptsOnlyTls12AndTls13) {
    startGateway();
    const QByteArray request = get("/api/x");
    // openssl offers the old protocols only at security level 0.
    const QString weakest = u"DEFAULT:@SECLEVEL=0"_s;
    for (const QString& old : {u"-tls1"_s, u"-tls1_1"_s}) {
        EXPECT_THAT(openssl({old, u"-cipher"_s, weakest, u"-ign_eof"_s}, request),
                    HasSubstr("alert protocol version"))
            << old.toStdString();
    }
    EXPECT_THAT(openssl({u"-tls1_2"_s, u"-ign_eof"_s}, request),
                HasSubstr("HTTP/1.1 500 Internal Server Error"));
    EXPECT_THAT(openssl({u"-tls1_3"_s, u"-ign_eof"_s}, request),
                HasSubstr("HTTP/1.1 500 Internal Server Error"));
}

TEST_F(HttpsTest, RefusesWeakCiphers) {
    startGateway();
    for (const QString& weak : {u"aNULL"_s, u"eNULL"_s, u"EXPORT"_s, u"RC4"_s, u"3DES"_s}) {
        const std::string shown = openssl(
            {u"-tls1_2"_s, u"-cipher"_s, weak + u":@SECLEVEL=0", u"-ign_eof"_s}, get("/api/x"));
        EXPECT_THAT(shown, Not(HasSubstr("HTTP/1.1"))) << weak.toStdString();
    }
}

TEST_F(HttpsTest, RefusesRenegotiationAndCompression) {
    startGateway();
    const std::string shown = openssl({u"-tls1_2"_s}, "R\n");
    EXPECT_THAT(shown, HasSubstr("RENEGOTIATING"));
    EXPECT_THAT(shown, HasSubstr("no renegotiation"));
    EXPECT_THAT(shown, HasSubstr("Compression: NONE"));
}

TEST_F(HttpsTest, SendsCloseNotifyAfterEveryReply) {
    startGateway();
    for (const QString& protocol : {u"-tls1_2"_s, u"-tls1_3"_s}) {
        const std::string shown = openssl({protocol, u"-ign_eof"_s}, get("/fwfiles/none"));
        EXPECT_THAT(shown, HasSubstr("HTTP/1.1 404 Not Found"));
        EXPECT_THAT(shown, Not(HasSubstr("unexpected eof"))) << protocol.toStdString();
    }
}

// A long cookie is sufficient to exceed the limit.
TEST_F(HttpsTest, LimitsRequestTo4096Bytes) {
    site_.writeFile(u"fwfiles/a"_s, "content over TLS");
    startGateway();
    const QByteArray begin = "GET /fwfiles/a HTTP/1.1\r\nCookie: ";
    const QByteArray end = "\r\n\r\n";
    const QByteArray cookie(4096 - begin.size() - end.size(), 'x');
    EXPECT_EQ(exchange(site_.port(), begin + cookie + end, Transport::Tls),
              streamedReply("content over TLS"));
    EXPECT_EQ(exchange(site_.port(), begin + cookie + 'x' + end, Transport::Tls),
              kReply500 + kReply500);
}

TEST_F(HttpsTest, ResumesSession) {
    startGateway();
    const QString session = pathForProgram(session_);
    for (const QString& protocol : {u"-tls1_2"_s, u"-tls1_3"_s}) {
        const std::string first =
            openssl({protocol, u"-ign_eof"_s, u"-sess_out"_s, session}, get("/fwfiles/none"));
        EXPECT_THAT(first, HasSubstr("\nNew, TLSv1."));
        const std::string second =
            openssl({protocol, u"-ign_eof"_s, u"-sess_in"_s, session}, get("/fwfiles/none"));
        EXPECT_THAT(second, HasSubstr("\nReused, TLSv1.")) << protocol.toStdString();
        EXPECT_THAT(second, HasSubstr("HTTP/1.1 404 Not Found"));
    }
}

// A session without a ticket can be resumed only if the server keeps it under a session ID. openssl
// writes only sessions that can be resumed.
TEST_F(HttpsTest, KeepsNoSessionWithoutTicket) {
    startGateway();
    const QString session = pathForProgram(session_);
    const QStringList options{u"-tls1_2"_s, u"-no_ticket"_s, u"-ign_eof"_s};
    const std::string first =
        openssl(options + QStringList{u"-sess_out"_s, session}, get("/fwfiles/none"));
    EXPECT_THAT(first, HasSubstr("HTTP/1.1 404 Not Found"));
    EXPECT_THAT(first, HasSubstr("Session-ID: \n"));
    if (QFile::exists(session_)) {
        EXPECT_THAT(openssl(options + QStringList{u"-sess_in"_s, session}, get("/fwfiles/none")),
                    HasSubstr("\nNew, TLSv1.2"));
    }
}

TEST_F(HttpsTest, CurlVerifiesHostName) {
    site_.writeFile(u"fwfiles/a"_s, "content over TLS");
    startGateway();
    EXPECT_EQ(curl(u"localhost"_s), "content over TLS");
    EXPECT_THAT(curl(u"127.0.0.1"_s), HasSubstr("subject name"));
}

TEST_F(HttpsTest, SendsIntermediateOfCertificateFile) {
    if (kOnWindows) {
        GTEST_SKIP() << "certificates are not in files on this system";
    }
    site_.writeFile(u"fwfiles/a"_s, "content over TLS");
    const IssuedCertificate issued = startWithIssuedCertificate(IntermediatePlace::CertificateFile);
    EXPECT_EQ(curl(u"localhost"_s), "content over TLS");
    EXPECT_EQ(messagesInHex().count(certificateMessage({issued.certificate, issued.intermediate})),
              1);
}

TEST_F(HttpsTest, SendsIntermediateOfAuthorities) {
    site_.writeFile(u"fwfiles/a"_s, "content over TLS");
    const IssuedCertificate issued = startWithIssuedCertificate(IntermediatePlace::Authorities);
    EXPECT_EQ(curl(u"localhost"_s), "content over TLS");
    EXPECT_EQ(messagesInHex().count(certificateMessage({issued.certificate, issued.intermediate})),
              1);
}

TEST_F(HttpsTest, SendsOnlyCertificateIfNoIntermediate) {
    const IssuedCertificate issued = startWithIssuedCertificate(IntermediatePlace::Nowhere);
    EXPECT_EQ(messagesInHex().count(certificateMessage({issued.certificate})), 1);
    EXPECT_THAT(curl(u"localhost"_s), HasSubstr("unable to get local issuer certificate"));
}

// OpenSSL refuses every handshake if it has to send such a certificate.
TEST_F(HttpsTest, DoesNotSendWeakIntermediate) {
    const IssuedCertificate issued =
        startWithIssuedCertificate(IntermediatePlace::Authorities, "SHA1");
    EXPECT_EQ(messagesInHex().count(certificateMessage({issued.certificate})), 1);
}

TEST_F(HttpsTest, SilentClientTimesOut) {
    Settings settings;
    settings.ConnectionTimeout = "1";
    startGateway(settings);
    QElapsedTimer timer;
    timer.start();
    Client silent(site_.port());
    EXPECT_EQ(silent.readToEnd(), "");
    EXPECT_GE(timer.elapsed(), earliestExpiry(1s).count());
    EXPECT_TRUE(site_.waitUntilLogged(u"5 [End] connect timeout"_s));
}

TEST_F(HttpsTest, IncompleteHandshakeTimesOut) {
    Settings settings;
    settings.ConnectionTimeout = "1";
    startGateway(settings);
    Client client(site_.port());
    client.send(QByteArray::fromHex("1603010200010001fc0303")); // start of a long ClientHello
    EXPECT_EQ(client.readToEnd(), "");
    EXPECT_TRUE(site_.waitUntilLogged(u"5 [End] connect timeout"_s));
}

TEST_F(HttpsTest, InvalidTlsDoesNotDisturbOtherClients) {
    Settings settings;
    settings.ConnectionTimeout = "2";
    site_.writeFile(u"fwfiles/a"_s, "content");
    startGateway(settings);
    Client other(site_.port(), Transport::Tls);
    for (const QByteArray& bytes : {get("/fwfiles/a"), QByteArray(5000, '\x16')}) {
        Client client(site_.port());
        client.send(bytes);
        EXPECT_THAT(client.readToEnd().toStdString(), Not(HasSubstr("HTTP")));
    }
    other.send(get("/fwfiles/a"));
    EXPECT_THAT(other.readToEnd().toStdString(), testing::EndsWith("\r\n\r\ncontent"));
}

} // namespace
} // namespace quorin::test
