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

QByteArray machineName() {
    QString name = QHostInfo::localHostName();
    if (!QHostInfo::localDomainName().isEmpty()) {
        name += u'.' + QHostInfo::localDomainName();
    }
    return name.toUtf8();
}

QByteArray nameOfCloud(const QString& rootUrl) {
    return chooseCertificateName(kCloud, rootUrl, u"gateway.example"_s);
}

QByteArray nameOfFacility(const QString& gatewayAddress) {
    return chooseCertificateName(kFacility, u"https://cloud.example/QuorinCloud5"_s,
                                 gatewayAddress);
}

TEST(CertificateNameTest, theMachineHasAName) {
    EXPECT_FALSE(machineName().isEmpty());
}

TEST(CertificateNameTest, theCloudsOwnOrganizationIsNamedByItsRootUrl) {
    EXPECT_EQ(nameOfCloud(u"https://cloud.example/QuorinCloud5"_s), "cloud.example");
    EXPECT_EQ(nameOfCloud(u"://cloud.example/QuorinCloud5"_s), "cloud.example");
    EXPECT_EQ(nameOfCloud(u"https://cloud.example:8443/QuorinCloud5/api"_s), "cloud.example:8443");
    EXPECT_EQ(nameOfCloud(u"https://r\u00f6ntgen.example/QuorinCloud5"_s), "r\u00f6ntgen.example");
}

TEST(CertificateNameTest, theNameReachesFromTheLastSchemeToTheLastProductName) {
    EXPECT_EQ(nameOfCloud(u"a://b/QuorinCloud5/c/QuorinCloud5/d"_s), "b/QuorinCloud5/c");
    EXPECT_EQ(nameOfCloud(u"a://b://c/QuorinCloud5"_s), "c");
    EXPECT_EQ(nameOfCloud(u"https:///QuorinCloud5"_s), "");
}

TEST(CertificateNameTest, aRootUrlOfAnotherFormStandsForThisMachine) {
    EXPECT_EQ(nameOfCloud(u"https://cloud.example"_s), machineName());
    EXPECT_EQ(nameOfCloud(u"https://cloud.example/quorincloud5"_s), machineName());
    EXPECT_EQ(nameOfCloud(u"cloud.example/QuorinCloud5"_s), machineName());
    EXPECT_EQ(nameOfCloud(QString()), machineName());
}

TEST(CertificateNameTest, anyOtherOrganizationIsNamedByItsGatewayAddress) {
    EXPECT_EQ(nameOfFacility(u"Gateway.Example"_s), "Gateway.Example");
    EXPECT_EQ(nameOfFacility(u"192.168.0.1"_s), "192.168.0.1");
    EXPECT_EQ(nameOfFacility(u"fe80::1"_s), "fe80::1");
    EXPECT_EQ(nameOfFacility(u"localhost"_s), "localhost");
    EXPECT_EQ(nameOfFacility(u"r\u00f6ntgen"_s), "r\u00f6ntgen");
    EXPECT_EQ(nameOfFacility(QString()), "");
}

TEST(CertificateNameTest, aLoopbackAddressStandsForThisMachine) {
    for (const QString& address :
         {u"127.0.0.1"_s, u"127.1.2.3"_s, u"::1"_s, u"::ffff:127.0.0.1"_s, u"0:0:0:0:0:0:0:1"_s}) {
        EXPECT_EQ(nameOfFacility(address), machineName()) << address.toStdString();
    }
}

TEST(CertificateNameTest, anOrganizationIsComparedToTheLetter) {
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
