#include "cert/server_certificate.h"

#include "cert/certificate_chain.h"
#include "cert/certificate_fields.h"
#include "cert/pem.h"
#include "cert/private_key.h"
#include "log/log.h"

#include <QString>
#include <QStringView>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

// In search order.
constexpr std::array<QStringView, 2> kStoreNames{u"WebHosting", u"My"};

// Compares the complete name, ignoring the case of ASCII letters. An asterisk is not a wildcard
// (docs/compatibility.md). Empty names in the certificate match nothing, not even an empty `name`.
bool hasName(const platform::Certificate& certificate, QByteArrayView name) {
    const auto matches = [name](QByteArrayView candidate) {
        return !candidate.empty() && candidate.compare(name, Qt::CaseInsensitive) == 0;
    };
    const std::vector<std::string> dnsNames = certificate.dnsNames();
    return std::any_of(dnsNames.begin(), dnsNames.end(), matches) ||
           matches(certificate.displayName());
}

// Wraps the bytes of `secret` without copying them: a copy would not be wiped. The returned array
// must not outlive `secret`.
QByteArray wrap(const platform::SecretBytes& secret) {
    const QByteArrayView view = secret.view();
    return QByteArray::fromRawData(view.data(), view.size());
}

QList<QSslCertificate> intermediatesToSend(const platform::Certificate& certificate,
                                           const platform::CertificateSystem& system) {
    QList<QSslCertificate> intermediates;
    for (const QByteArray& der : intermediatesOf(certificate, system.currentTime())) {
        QSslCertificate intermediate(der, QSsl::Der);
        if (intermediate.isNull()) { // Qt would pass a null pointer to OpenSSL
            break;
        }
        intermediates.append(std::move(intermediate));
    }
    return intermediates;
}

ServerCertificate toServerCertificate(const platform::Certificate& certificate,
                                      const ExportedKey& key,
                                      const platform::CertificateSystem& system) {
    const platform::SecretBytes certificatePem =
        toPem(certificate.der(), PemType::Certificate, system);
    const platform::SecretBytes keyPem = toPem(key.keyBytes.view(), PemType::PrivateKey, system);
    return {QSslCertificate(wrap(certificatePem), QSsl::Pem),
            QSslKey(wrap(keyPem), key.algorithm, QSsl::Pem, QSsl::PrivateKey),
            intermediatesToSend(certificate, system)};
}

// Returns the first usable certificate in `store`. Logs why other certificates with a matching name
// are skipped.
std::optional<ServerCertificate> searchStore(platform::CertificateStore& store, QByteArrayView name,
                                             const platform::CertificateSystem& system) {
    while (const auto certificate = store.next()) {
        if (!hasName(*certificate, name)) {
            continue;
        }
        log::info(u"Found certificate with a matching subject name (Serial Number - " +
                  serialNumberText(*certificate) + u')');
        if (!isValidAt(system.currentTime(), *certificate)) {
            log::warn(u"This certificate expired."_s);
            continue;
        }
        const ExportedKey key = exportPrivateKey(*certificate);
        if (key.ok()) {
            log::info(u"Detect certificate for HTTPS server"_s);
            return toServerCertificate(*certificate, key, system);
        }
    }
    return std::nullopt;
}

} // namespace

ServerCertificate findServerCertificate(const QByteArray& name,
                                        const platform::CertificateSystem& system) {
    log::info(u"Try to search server certificate that have this name as subject alternative "
              u"names or common name. [" +
              QString::fromUtf8(name) + u']');
    for (const QStringView storeName : kStoreNames) {
        const auto store = system.openStore(storeName).value;
        if (!store) {
            log::error(u"Failed to open store (" + storeName + u").");
            continue;
        }
        if (auto found = searchStore(*store, name, system)) {
            return *std::move(found);
        }
    }
    log::error(u"Failed to find valid certificate."_s);
    return ServerCertificate();
}

} // namespace quorin
