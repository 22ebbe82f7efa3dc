#include "platform/unix/certificate_folders.h"

#include "platform/folders.h"
#include "platform/unix/base64_lines.h"
#include "platform/unix/file_content.h"
#include "platform/unix/openssl.h"
#include "platform/unix/pem_text.h"
#include "platform/unix/private_key_fields.h"
#include "platform/unix/x509_fields.h"

#include <QFile>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>
#include <utility>

namespace quorin::platform {

namespace {

constexpr QStringView kCertificatesFolder = u"certificates";
constexpr std::string_view kCertificateSuffix = ".pem";
constexpr std::string_view kKeySuffix = ".key";

class FileKeyHandle final : public KeyHandle {
public:
    // `key` is null if the key is encrypted.
    explicit FileKeyHandle(KeyPointer key, bool isExportable)
        : key_(std::move(key)), isExportable_(isExportable && key_) {}

    [[nodiscard]] SecretBytes exportPkcs8() const override {
        return isExportable_ ? pkcs8Of(*key_) : SecretBytes();
    }

    [[nodiscard]] QueryResult<QString> algorithmGroup() const override {
        if (!key_) {
            return {};
        }
        return {Outcome::Complete, algorithmGroupOf(*key_)};
    }

private:
    KeyPointer key_;
    bool isExportable_;
};

class FileCertificate final : public Certificate {
public:
    FileCertificate(X509Pointer certificate, std::string pathWithoutSuffix)
        : certificate_(std::move(certificate)),
          der_(derOf(*certificate_)),
          pathWithoutSuffix_(std::move(pathWithoutSuffix)) {}

    [[nodiscard]] std::vector<std::string> dnsNames() const override {
        return dnsNamesOf(*certificate_);
    }
    [[nodiscard]] std::string displayName() const override { return displayNameOf(*certificate_); }
    [[nodiscard]] QDateTime notBefore() const override { return notBeforeOf(*certificate_); }
    [[nodiscard]] QDateTime notAfter() const override { return notAfterOf(*certificate_); }
    [[nodiscard]] QByteArray serialNumber() const override { return serialNumberOf(*certificate_); }
    [[nodiscard]] QByteArrayView der() const override { return der_; }

    [[nodiscard]] std::unique_ptr<KeyHandle> acquirePrivateKey() const override {
        for (const std::string_view suffix : {kCertificateSuffix, kKeySuffix}) {
            const auto file = readFile(pathWithoutSuffix_ + std::string(suffix), kMaxPemFileSize);
            if (!file) {
                continue;
            }
            auto key = firstPrivateKey(file->bytes.view());
            if (key && (*key == nullptr || isKeyOf(*certificate_, **key))) {
                return std::make_unique<FileKeyHandle>(std::move(*key), !file->isWorldReadable);
            }
        }
        return nullptr;
    }

private:
    X509Pointer certificate_;
    QByteArray der_;
    std::string pathWithoutSuffix_;
};

class FolderStore final : public CertificateStore {
public:
    // `paths` are the certificate files in order, without their suffix.
    explicit FolderStore(std::vector<std::string> paths) : paths_(std::move(paths)) {}

    [[nodiscard]] std::unique_ptr<Certificate> next() override {
        while (position_ < paths_.size()) {
            std::string& path = paths_[position_++];
            const auto file = readFile(path + std::string(kCertificateSuffix), kMaxPemFileSize);
            if (!file) {
                continue;
            }
            if (X509Pointer certificate = firstCertificate(file->bytes.view())) {
                return std::make_unique<FileCertificate>(std::move(certificate), std::move(path));
            }
        }
        return nullptr;
    }

private:
    std::vector<std::string> paths_;
    std::size_t position_ = 0;
};

// Returns the paths of the certificate files in `folder`, without their suffix, in the byte order
// of the file names. Returns nothing if the folder cannot be read.
std::optional<std::vector<std::string>> certificateFilesIn(const std::string& folder) {
    std::vector<std::string> names;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::string name = entry->path().filename().native();
        if (name.size() > kCertificateSuffix.size() && name.ends_with(kCertificateSuffix)) {
            names.push_back(std::move(name));
        }
    }
    if (error) {
        return std::nullopt;
    }
    std::sort(names.begin(), names.end());
    for (std::string& name : names) {
        name.resize(name.size() - kCertificateSuffix.size());
        name.insert(0, folder + '/');
    }
    return names;
}

} // namespace

CertificateFolders::CertificateFolders(QString folder) : folder_(std::move(folder)) {}

std::unique_ptr<CertificateStore> CertificateFolders::openStore(QStringView name) const {
    const QByteArray folder = QFile::encodeName(joinPath(folder_, name.toString()));
    auto paths = certificateFilesIn(folder.toStdString());
    return paths ? std::make_unique<FolderStore>(std::move(*paths)) : nullptr;
}

QDateTime CertificateFolders::currentTime() const {
    return QDateTime::currentDateTimeUtc();
}

QueryResult<SecretBytes> CertificateFolders::toBase64(QByteArrayView bytes) const {
    return {Outcome::Complete, base64LinesOf(bytes)};
}

const CertificateSystem& localMachineCertificates() {
    static const CertificateFolders folders(
        joinPath(joinPath(commonApplicationDataFolder(), kProductFolder.toString()),
                 kCertificatesFolder.toString()));
    return folders;
}

} // namespace quorin::platform
