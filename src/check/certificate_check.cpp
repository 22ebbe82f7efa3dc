#include "check/certificate_check.h"

#include "cert/certificate_name.h"
#include "cert/server_certificate.h"
#include "check/finding_codes.h"
#include "check/settings_record.h"
#include "config/element_names.h"
#include "config/gateway_exception.h"
#include "log/log_capture.h"
#include "worker/tls_backend.h"

#include <QDateTime>
#include <QSslError>
#include <QStringList>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::check {

namespace {

constexpr qint64 kDaysToRenew = 30;

// A certificate, its key, and what the search for it logged.
struct SearchResult {
    ServerCertificate found;
    QString log; // warnings and errors, separated by semicolons
};

SearchResult search(const QByteArray& name, const platform::CertificateSystem& system) {
    const LogCapture capture;
    SearchResult result{findServerCertificate(name, system), {}};
    QStringList lines;
    for (const LogCapture::Line& line : capture.lines()) {
        if (line.level != lumetrix::Level::Info || line.message.startsWith(u"Found") ||
            line.message.startsWith(u"Key Algorithm")) {
            lines.append(line.message);
        }
    }
    result.log = lines.join(u"; ");
    return result;
}

bool hasIssuer(const QSslCertificate& certificate) {
    const QList<QSslError> errors = QSslCertificate::verify({certificate});
    return std::none_of(errors.begin(), errors.end(), [](const QSslError& error) {
        return error.error() == QSslError::UnableToGetLocalIssuerCertificate ||
               error.error() == QSslError::UnableToVerifyFirstCertificate;
    });
}

Finding describeCertificate(const QString& name, const QSslCertificate& certificate,
                            qint64 daysLeft) {
    Finding finding;
    finding.severity = Severity::Info;
    finding.code = code::kCertificateFound;
    finding.subject = name;
    finding.value =
        QString::fromLatin1(QByteArray(certificate.serialNumber()).replace(':', QByteArray()));
    finding.reason = u"certificate with this serial number, valid for "_s +
                     QString::number(daysLeft) + u" more days";
    return finding;
}

void checkFoundCertificate(const QString& name, const SearchResult& result, const QDateTime& now,
                           Findings& findings) {
    const auto& [certificate, key] = result.found;
    const qint64 daysLeft = now.daysTo(certificate.expiryDate());
    Finding finding = describeCertificate(name, certificate, daysLeft);
    findings.push_back(finding);
    if (key.isNull()) {
        finding.severity = Severity::Error;
        finding.code = code::kCertificateKeyUnusable;
        finding.reason = u"the TLS library does not support the key, so that every TLS handshake "
                         u"fails: "_s +
                         result.log;
        finding.action = u"Install a certificate with an RSA key or an EC key (P-256, P-384)."_s;
        findings.push_back(finding);
    }
    finding.severity = Severity::Warning;
    if (daysLeft < kDaysToRenew) {
        finding.code = code::kCertificateExpiring;
        finding.reason = u"the certificate expires in "_s + QString::number(daysLeft) + u" days";
        finding.action = u"Renew it and restart the gateway."_s;
        findings.push_back(finding);
    }
    if (!hasIssuer(certificate)) {
        finding.code = code::kCertificateChainIncomplete;
        finding.reason = u"this machine does not have the certificate of the issuer ("_s +
                         certificate.issuerDisplayName() +
                         u"); clients that lack it refuse the connection";
        finding.action = u"Install the issuer's certificate on the clients."_s;
        findings.push_back(finding);
    }
}

} // namespace

void checkCertificate(const SettingsRecord& record, Findings& findings,
                      const platform::CertificateSystem& system) {
    const GatewaySettings& settings = record.settings();
    if (!record.isValid(element::kHttpsEnabled) || !settings.HttpsEnabled) {
        return;
    }
    Finding finding;
    if (const std::optional<QString> missing = missingTlsBackend()) {
        finding.code = code::kTlsBackendMissing;
        finding.subject = record.pathOf(element::kHttpsEnabled);
        finding.value = u"true"_s;
        finding.reason = endMessage(*missing);
        finding.action = u"Install the TLS library, or disable HTTPS."_s;
        finding.failsStart = true;
        findings.push_back(finding);
        return;
    }
    if (!record.isValid(element::kOrganizationId) || !record.isValid(element::kRootUrl) ||
        !record.isValid(element::kGatewayAddress)) {
        return;
    }
    const QByteArray name =
        chooseCertificateName(settings.OrganizationId, settings.RootUrl, settings.GatewayAddress);
    const SearchResult result = search(name, system);
    if (!result.found.first.isNull()) {
        checkFoundCertificate(QString::fromUtf8(name), result, system.currentTime(), findings);
        return;
    }
    finding.code = code::kCertificateMissing;
    finding.subject = QString::fromUtf8(name);
    finding.reason =
        u"no usable certificate has this name, so that every TLS handshake fails: "_s + result.log;
    finding.action = u"Install a certificate with this name and its key."_s;
    findings.push_back(finding);
}

} // namespace quorin::check
