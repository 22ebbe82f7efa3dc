#include "cert/server_certificate.h"

#include "cert/pem.h"
#include "cert/private_key.h"
#include "log/application_logger.h"

#include <QDateTime>
#include <QString>
#include <QStringView>

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

using Logger = QuorinGatewayApplicationLogger;

// In the order in which they are searched.
constexpr std::array<QStringView, 2> kStoreNames{u"WebHosting", u"My"};

constexpr char toAsciiUpper(char byte) {
    return byte >= 'a' && byte <= 'z' ? static_cast<char>(byte - 'a' + 'A') : byte;
}

bool isSameName(std::string_view left, std::string_view right) {
    return std::equal(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char one, char other) { return toAsciiUpper(one) == toAsciiUpper(other); });
}

// An asterisk in a certificate's name stands for itself alone. What the system does not name
// matches nothing, not even an empty `name`.
bool carriesName(const platform::Certificate& certificate, std::string_view name) {
    const auto matches = [name](std::string_view candidate) {
        return !candidate.empty() && isSameName(candidate, name);
    };
    const std::vector<std::string> dnsNames = certificate.dnsNames();
    return std::any_of(dnsNames.begin(), dnsNames.end(), matches) ||
           matches(certificate.displayName());
}

QString serialText(const platform::Certificate& certificate) {
    QByteArray bytes = certificate.serialNumber();
    std::reverse(bytes.begin(), bytes.end());
    return QString::fromLatin1(bytes.toHex());
}

bool isValidAt(const QDateTime& now, const platform::Certificate& certificate) {
    return !(now < certificate.notBefore() || certificate.notAfter() < now);
}

// The bytes of `secret` where they are, so that no copy has to be wiped. Goes before `secret`.
QByteArray borrowed(const platform::SecretBytes& secret) {
    const QByteArrayView view = secret.view();
    return QByteArray::fromRawData(view.data(), view.size());
}

ServerCertificate forTls(const platform::Certificate& certificate, const ExportedKey& key,
                         const platform::CertificateSystem& system) {
    const platform::SecretBytes certificatePem =
        toPem(certificate.der(), PemType::Certificate, system);
    const platform::SecretBytes keyPem = toPem(key.keyBytes.view(), PemType::PrivateKey, system);
    return {QSslCertificate(borrowed(certificatePem), QSsl::Pem),
            QSslKey(borrowed(keyPem), key.algorithm, QSsl::Pem, QSsl::PrivateKey)};
}

// The first certificate of `store` that will do; why others of that name do not is logged.
std::optional<ServerCertificate> searchStore(platform::CertificateStore& store,
                                             std::string_view name,
                                             const platform::CertificateSystem& system) {
    while (const auto certificate = store.next()) {
        if (!carriesName(*certificate, name)) {
            continue;
        }
        Logger::logInfo(u"Found certificate with a matching subject name (Serial Number - " +
                        serialText(*certificate) + u')');
        if (!isValidAt(system.currentTime(), *certificate)) {
            Logger::logWarn(u"This certificate expired."_s);
            continue;
        }
        const ExportedKey key = exportPrivateKey(*certificate);
        if (key.ok()) {
            Logger::logInfo(u"Detect certificate for HTTPS server"_s);
            return forTls(*certificate, key, system);
        }
    }
    return std::nullopt;
}

} // namespace

ServerCertificate findServerCertificate(const QByteArray& name,
                                        const platform::CertificateSystem& system) {
    Logger::logInfo(u"Try to search server certificate that have this name as subject alternative "
                    u"names or common name. [" +
                    QString::fromUtf8(name) + u']');
    for (const QStringView storeName : kStoreNames) {
        const auto store = system.openStore(storeName);
        if (!store) {
            Logger::logError(u"Failed to open store (" + storeName + u").");
            continue;
        }
        if (auto found = searchStore(*store, name.toStdString(), system)) {
            return *std::move(found);
        }
    }
    Logger::logError(u"Failed to find valid certificate."_s);
    return ServerCertificate();
}

} // namespace quorin
