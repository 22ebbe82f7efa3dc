#include "cert/server_certificate.h"

#include "cert/certificate_chain.h"
#include "cert/certificate_fields.h"
#include "cert/pem.h"
#include "cert/private_key.h"
#include "log/log.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory>
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

QSslCertificate toQt(const platform::Certificate& certificate,
                     const platform::CertificateSystem& system) {
    return QSslCertificate(wrap(toPem(certificate.der(), PemType::Certificate, system)), QSsl::Pem);
}

QSslKey toQt(const ExportedKey& key, const platform::CertificateSystem& system) {
    if (key.passPhrase.empty()) {
        return QSslKey(wrap(toPem(key.keyBytes.view(), PemType::PrivateKey, system)), key.algorithm,
                       QSsl::Pem, QSsl::PrivateKey);
    }
    // OpenSSL reads the pass phrase up to a terminating NUL.
    const platform::SecretBytes passPhrase =
        platform::SecretBytes::joined({key.passPhrase.view(), QByteArrayView("\0", 1)});
    QSslKey decrypted(wrap(key.keyBytes), key.algorithm, QSsl::Der, QSsl::PrivateKey,
                      wrap(passPhrase));
    platform::wipeUsedStack(); // OpenSSL 3.0 leaves the pass phrase there
    return decrypted;
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

ExaminedCertificate examined(const platform::Certificate& certificate) {
    ExaminedCertificate result;
    result.subject = QString::fromStdString(certificate.displayName());
    for (const std::string& name : certificate.dnsNames()) {
        result.dnsNames.append(QString::fromStdString(name));
    }
    result.serialNumber = serialNumberText(certificate);
    result.notBefore = certificate.notBefore();
    result.notAfter = certificate.notAfter();
    return result;
}

// One search. Logs and records each decision in the same place, so that both always agree.
class Searcher {
public:
    Searcher(QByteArrayView name, const platform::CertificateSystem& system)
        : name_(name), system_(system) {}

    CertificateSearch run() {
        log::info(u"Try to search server certificate that have this name as subject alternative "
                  u"names or common name. [" +
                  QString::fromUtf8(name_) + u']');
        const bool isFound = std::any_of(kStoreNames.begin(), kStoreNames.end(),
                                         [this](QStringView name) { return searchStore(name); });
        if (!isFound) {
            log::error(u"Failed to find valid certificate."_s);
            tryEncryptedExport();
        }
        return std::move(result_);
    }

private:
    // A certificate whose key the system does not export unencrypted, and its place in the result.
    struct Refused {
        std::unique_ptr<platform::Certificate> certificate;
        std::size_t store;
        std::size_t index;
    };

    // Return true if they accept a certificate.

    bool searchStore(QStringView name) {
        auto [store, error] = system_.openStore(name);
        result_.stores.push_back({name.toString(), error, {}});
        if (!store) {
            log::error(u"Failed to open store (" + name + u").");
            return false;
        }
        std::vector<ExaminedCertificate>& certificates = result_.stores.back().certificates;
        while (auto certificate = store->next()) {
            ExaminedCertificate& entry = certificates.emplace_back(examined(*certificate));
            entry.verdict = judge(*certificate, entry);
            if (entry.verdict == Verdict::Accepted) {
                return true;
            }
            if (entry.verdict == Verdict::KeyNotExportable) {
                refused_.push_back(
                    {std::move(certificate), result_.stores.size() - 1, certificates.size() - 1});
            }
        }
        return false;
    }

    Verdict judge(const platform::Certificate& certificate, ExaminedCertificate& entry) {
        if (!hasName(certificate, name_)) {
            return Verdict::OtherName;
        }
        log::info(u"Found certificate with a matching subject name (Serial Number - " +
                  entry.serialNumber + u')');
        if (!isValidAt(system_.currentTime(), certificate)) {
            log::warn(u"This certificate expired."_s);
            return Verdict::OutsideValidity;
        }
        const ExportedKey key = exportPrivateKey(certificate);
        entry.error = key.error;
        if (!key.ok()) {
            return key.hasHandle ? Verdict::KeyNotExportable : Verdict::NoKeyHandle;
        }
        log::info(u"Detect certificate for HTTPS server"_s);
        result_.found.certificate = toQt(certificate, system_);
        result_.found.privateKey = toQt(key, system_);
        result_.found.intermediates = intermediatesToSend(certificate, system_);
        return Verdict::Accepted;
    }

    void tryEncryptedExport() {
        for (const Refused& refused : refused_) {
            ExaminedCertificate& entry = result_.stores[refused.store].certificates[refused.index];
            entry.verdict = judgeEncrypted(*refused.certificate, entry);
            if (entry.verdict == Verdict::AcceptedEncrypted) {
                return;
            }
        }
    }

    Verdict judgeEncrypted(const platform::Certificate& certificate, ExaminedCertificate& entry) {
        const ExportedKey key = exportEncryptedPrivateKey(certificate);
        entry.encryptedError = key.error;
        if (!key.ok()) {
            return Verdict::KeyNotExportable;
        }
        QSslKey privateKey = toQt(key, system_);
        if (privateKey.isNull()) {
            log::warn(u"Failed to decrypt private key."_s);
            return Verdict::KeyNotDecryptable;
        }
        log::info(u"Detect certificate for HTTPS server"_s);
        result_.found.certificate = toQt(certificate, system_);
        result_.found.privateKey = std::move(privateKey);
        result_.found.intermediates = intermediatesToSend(certificate, system_);
        return Verdict::AcceptedEncrypted;
    }

    QByteArrayView name_;
    const platform::CertificateSystem& system_;
    CertificateSearch result_;
    std::vector<Refused> refused_; // in search order
};

} // namespace

CertificateSearch searchServerCertificate(const QByteArray& name,
                                          const platform::CertificateSystem& system) {
    return Searcher(name, system).run();
}

ServerCertificate findServerCertificate(const QByteArray& name,
                                        const platform::CertificateSystem& system) {
    return searchServerCertificate(name, system).found;
}

} // namespace quorin
