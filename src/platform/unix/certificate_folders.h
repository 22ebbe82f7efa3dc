#pragma once

#include "platform/certificate_store.h"

#include <QString>

namespace quorin::platform {

// Certificate stores in the file system. A store is a folder with the name of the store. A
// certificate is the first one in a file NAME.pem in it, with the private key in the same file or
// in NAME.key in the same folder. Certificates are enumerated in the byte order of their file
// names. Its issuers are the other certificates in the file and the authorities of the system's
// OpenSSL.
//
// Files without a certificate are skipped. Keys that are encrypted or in a world-readable file have
// a handle but are not exportable. Keys that do not match the certificate are ignored.
class CertificateFolders final : public CertificateSystem {
public:
    // `folder` contains the folders of the stores.
    explicit CertificateFolders(QString folder);

    [[nodiscard]] SystemResult<std::unique_ptr<CertificateStore>>
    openStore(QStringView name) const override;
    [[nodiscard]] QDateTime currentTime() const override;
    [[nodiscard]] QueryResult<SecretBytes> toBase64(QByteArrayView bytes) const override;

private:
    QString folder_;
};

// Maximum size of certificate and key files in bytes. Larger files are ignored.
inline constexpr std::size_t kMaxPemFileSize = std::size_t{1} << 20;

} // namespace quorin::platform
