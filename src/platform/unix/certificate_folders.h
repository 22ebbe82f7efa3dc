#pragma once

#include "platform/certificate_store.h"

#include <QString>

namespace platform {

// Certificate stores as folders. A store is the folder of its name; a certificate in it is a file
// NAME.pem, with its private key in the same file or in NAME.key beside it. The order is the byte
// order of the file names.
//
// What holds no certificate is passed over. A key that is encrypted, or stands in a file that all
// users of the system may read, is there but is not let out; one that does not belong to the
// certificate is no key of it.
class CertificateFolders final : public CertificateSystem {
public:
    // The stores are the folders in `folder`.
    explicit CertificateFolders(QString folder);

    [[nodiscard]] std::unique_ptr<CertificateStore> openStore(QStringView name) const override;
    [[nodiscard]] QDateTime currentTime() const override;
    [[nodiscard]] TwoStepAnswer<SecretBytes> toBase64(QByteArrayView bytes) const override;

private:
    QString folder_;
};

// Files larger than this, in bytes, hold no certificate and no key.
inline constexpr std::size_t kLargestPemFile = std::size_t{1} << 20;

} // namespace platform
