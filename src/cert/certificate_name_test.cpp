#include "cert/certificate_name.h"

#include <QHostInfo>
#include <QStringBuilder>

#include <gtest/gtest.h>

#include <array>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

const QString kCloud = u"00000000-0000-0000-0000-000000000001"_s;
const QString kFacility = u"7a3c4f3e-0000-0000-0000-000000000001"_s;

QByteArray localMachineName() {
    QString name = QHostInfo::localHostName();
    if (!QHostInfo::localDomainName().isEmpty()) {
        name += u'.' + QHostInfo::localDomainName();
    }
    return name.toUtf8();
}

QByteArray cloudName(const QString& rootUrl) {
    return chooseCertificateName(kCloud, rootUrl, u"gateway.example"_s);
}

QByteArray facilityName(const QString& gatewayAddress) {
    return chooseCertificateName(kFacility, u"https://cloud.example/QuorinCloud5"_s,
                                 gatewayAddress);
}

TEST(CertificateNameTest, LocalMachineNameIsNotEmpty) {
    EXPECT_FALSE(localMachineName().isEmpty());
}

TEST(CertificateNameTest, CloudUsesHostOfRootUrl) {
    EXPECT_EQ(cloudName(u"https://cloud.example/QuorinCloud5"_s), "cloud.example");
    EXPECT_EQ(cloudName(u"://cloud.example/QuorinCloud5"_s), "cloud.example");
    EXPECT_EQ(cloudName(u"https://cloud.example:8443/QuorinCloud5/api"_s), "cloud.example:8443");
    EXPECT_EQ(cloudName(u"https://r\u00f6ntgen.example/QuorinCloud5"_s), "r\u00f6ntgen.example");
}

TEST(CertificateNameTest, MatchesRootUrlGreedily) {
    EXPECT_EQ(cloudName(u"a://b/QuorinCloud5/c/QuorinCloud5/d"_s), "b/QuorinCloud5/c");
    EXPECT_EQ(cloudName(u"a://b://c/QuorinCloud5"_s), "c");
    EXPECT_EQ(cloudName(u"https:///QuorinCloud5"_s), "");
}

TEST(CertificateNameTest, UnmatchedRootUrlGivesLocalMachineName) {
    EXPECT_EQ(cloudName(u"https://cloud.example"_s), localMachineName());
    EXPECT_EQ(cloudName(u"https://cloud.example/quorincloud5"_s), localMachineName());
    EXPECT_EQ(cloudName(u"cloud.example/QuorinCloud5"_s), localMachineName());
    EXPECT_EQ(cloudName(QString()), localMachineName());
}

TEST(CertificateNameTest, FacilityUsesGatewayAddress) {
    EXPECT_EQ(facilityName(u"Gateway.Example"_s), "Gateway.Example");
    EXPECT_EQ(facilityName(u"192.168.0.1"_s), "192.168.0.1");
    EXPECT_EQ(facilityName(u"fe80::1"_s), "fe80::1");
    EXPECT_EQ(facilityName(u"localhost"_s), "localhost");
    EXPECT_EQ(facilityName(u"r\u00f6ntgen"_s), "r\u00f6ntgen");
    EXPECT_EQ(facilityName(QString()), "");
}

TEST(CertificateNameTest, LoopbackAddressGivesLocalMachineName) {
    for (const QString& address :
         {u"127.0.0.1"_s, u"127.1.2.3"_s, u"::1"_s, u"::ffff:127.0.0.1"_s, u"0:0:0:0:0:0:0:1"_s}) {
        EXPECT_EQ(facilityName(address), localMachineName()) << address.toStdString();
    }
}

TEST(CertificateNameTest, ComparesOrganizationExactly) {
    const std::array<QString, 4> others{QString(), kCloud + u' ', kCloud.chopped(1),
                                        u"{" + kCloud + u"}"};
    for (const QString& organization : others) {
        EXPECT_EQ(chooseCertificateName(organization, u"https://cloud.example/QuorinCloud5"_s,
                                        u"gateway.example"_s),
                  "gateway.example");
    }
}

} // namespace
} // namespace quorin
