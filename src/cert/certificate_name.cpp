#include "cert/certificate_name.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QRegularExpression>

namespace quorin {

namespace {

constexpr QStringView kCloudOrganization = u"00000000-0000-0000-0000-000000000001";

QString localMachineName() {
    const QString host = QHostInfo::localHostName();
    const QString domain = QHostInfo::localDomainName();
    return domain.isEmpty() ? host : QString(host + u'.' + domain);
}

QString cloudHost(const QString& rootUrl) {
    static const QRegularExpression pattern(QStringLiteral("(.*)://(.*)/QuorinCloud5"));
    const QRegularExpressionMatch match = pattern.match(rootUrl);
    return match.hasMatch() ? match.captured(2) : localMachineName();
}

QString facilityHost(const QString& gatewayAddress) {
    return QHostAddress(gatewayAddress).isLoopback() ? localMachineName() : gatewayAddress;
}

} // namespace

QByteArray chooseCertificateName(const QString& organizationId, const QString& rootUrl,
                                 const QString& gatewayAddress) {
    const QString name =
        organizationId == kCloudOrganization ? cloudHost(rootUrl) : facilityHost(gatewayAddress);
    return name.toUtf8();
}

} // namespace quorin
