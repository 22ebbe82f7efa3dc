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
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::check {

namespace {

constexpr qint64 kDaysToRenew = 30;

// A certificate, its key, and why the search for it rejected others.
struct SearchResult {
    ServerCertificate found;
    QString reasons; // warnings and errors of the log, then causes; separated by semicolons
};

void appendCause(const QString& subject, const platform::SystemError& error, QStringList& causes) {
    if (error) {
        causes.append(subject + u": " + error.message() + u" (0x" +
                      QString::number(error.code(), 16) + u')');
    }
}

// Returns the system's errors, which the log does not contain.
QStringList causesOf(const std::vector<ExaminedStore>& stores) {
    QStringList causes;
    for (const ExaminedStore& store : stores) {
        appendCause(u"store "_s + store.name, store.error, causes);
        for (const ExaminedCertificate& certificate : store.certificates) {
            appendCause(certificate.serialNumber, certificate.error, causes);
            appendCause(certificate.serialNumber, certificate.encryptedError, causes);
        }
    }
    return causes;
}

SearchResult search(const QByteArray& name, const platform::CertificateSystem& system) {
    const LogCapture capture;
    CertificateSearch searched = searchServerCertificate(name, system);
    QStringList lines;
    for (const LogCapture::Line& line : capture.lines()) {
        if (line.level != lumetrix::Level::Info || line.message.startsWith(u"Found") ||
            line.message.startsWith(u"Key Algorithm")) {
            lines.append(line.message);
        }
    }
    lines += causesOf(searched.stores);
    return {std::move(searched.found), lines.join(u"; ")};
}

// Returns true if the issuer of the last certificate that is sent is known here.
bool isChainComplete(const ServerCertificate& sent) {
    const QList<QSslError> errors =
        QSslCertificate::verify(QList{sent.certificate} + sent.intermediates);
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
    const QSslCertificate& certificate = result.found.certificate;
    // Complete days; QDateTime::daysTo() would count midnights.
    const qint64 daysLeft =
        std::chrono::seconds(now.secsTo(certificate.expiryDate())) / std::chrono::days(1);
    Finding finding = describeCertificate(name, certificate, daysLeft);
    findings.push_back(finding);
    if (result.found.privateKey.isNull()) {
        finding.severity = Severity::Error;
        finding.code = code::kCertificateKeyUnusable;
        finding.reason = u"the TLS library does not support the key, so that every TLS handshake "
                         u"fails: "_s +
                         result.reasons;
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
    if (!isChainComplete(result.found)) {
        finding.code = code::kCertificateChainIncomplete;
        const QSslCertificate& last =
            result.found.intermediates.isEmpty() ? certificate : result.found.intermediates.last();
        finding.reason = u"this machine does not have the certificate of the issuer ("_s +
                         last.issuerDisplayName() +
                         u"); clients that lack it refuse the connection";
        finding.action = u"Install the issuer's certificate on this machine if it is an "
                         u"intermediate one, or on the clients."_s;
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
    if (!result.found.certificate.isNull()) {
        checkFoundCertificate(QString::fromUtf8(name), result, system.currentTime(), findings);
        return;
    }
    finding.code = code::kCertificateMissing;
    finding.subject = QString::fromUtf8(name);
    finding.reason = u"no usable certificate has this name, so that every TLS handshake fails: "_s +
                     result.reasons;
    finding.action = u"Install a certificate with this name and its key."_s;
    findings.push_back(finding);
}

} // namespace quorin::check
