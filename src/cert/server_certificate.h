#pragma once

#include "platform/certificate_store.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QSslCertificate>
#include <QSslKey>
#include <QString>
#include <QStringList>

#include <vector>

namespace quorin {

// The certificate and private key of the gateway. Both are null if no certificate was found; only
// the key is null if Qt does not support its algorithm.
struct ServerCertificate {
    QSslCertificate certificate;
    QSslKey privateKey;
    // The certificates of the intermediate authorities that the machine has, in the order in which
    // they are sent after `certificate`.
    QList<QSslCertificate> intermediates;
};

// What the search decided about a certificate.
enum class Verdict {
    Accepted,          // the gateway uses it
    AcceptedEncrypted, // the gateway uses it; the system exported the key only encrypted
    OtherName,         // it does not contain the name
    OutsideValidity,   // it has expired or is not valid yet
    NoKeyHandle,       // it has no private key, or the account has no access to the key
    KeyNotExportable,  // the system does not export the private key
    KeyNotDecryptable, // the system exported the private key encrypted; it could not be decrypted
};

// A certificate that the search has examined.
struct ExaminedCertificate {
    QString subject;      // the display name
    QStringList dnsNames; // see platform::Certificate
    QString serialNumber; // in lower-case hexadecimal, as in the log
    QDateTime notBefore;  // in UTC; null if unknown
    QDateTime notAfter;
    Verdict verdict = Verdict::OtherName;
    platform::SystemError error;          // of the access to the key or its unencrypted export
    platform::SystemError encryptedError; // of the encrypted export, if it was tried
};

// A store that the search has examined.
struct ExaminedStore {
    QString name;
    platform::SystemError error; // why the store could not be opened
    std::vector<ExaminedCertificate> certificates;
};

struct CertificateSearch {
    ServerCertificate found;
    std::vector<ExaminedStore> stores; // up to the accepted certificate
};

// Searches the local machine's stores "WebHosting" and "My" in this order for the first certificate
// for `name` (UTF-8) that is valid now and has an exportable private key. If there is none, takes
// the first whose key the system exports only encrypted. Logs each step.
[[nodiscard]] CertificateSearch searchServerCertificate(
    const QByteArray& name,
    const platform::CertificateSystem& system = platform::localMachineCertificates());

// Returns the certificate that searchServerCertificate() finds.
[[nodiscard]] ServerCertificate findServerCertificate(
    const QByteArray& name,
    const platform::CertificateSystem& system = platform::localMachineCertificates());

} // namespace quorin
