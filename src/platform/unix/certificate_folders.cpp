#include "platform/unix/certificate_folders.h"

#include "platform/folders.h"
#include "platform/unix/base64_lines.h"
#include "platform/unix/file_content.h"
#include "platform/unix/openssl.h"
#include "platform/unix/pem_text.h"
#include "platform/unix/private_key_fields.h"
#include "platform/unix/x509_chain.h"
#include "platform/unix/x509_fields.h"

#include <QFile>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace quorin::platform {

namespace {

constexpr QStringView kCertificatesFolder = u"certificates";
constexpr std::string_view kCertificateSuffix = ".pem";
constexpr std::string_view kKeySuffix = ".key";

using FileCertificates = std::vector<X509Pointer>;

class FileKeyHandle final : public KeyHandle {
public:
    // `key` is null if the key is encrypted.
    FileKeyHandle(KeyPointer key, bool isWorldReadable)
        : key_(std::move(key)), isWorldReadable_(isWorldReadable) {}

    [[nodiscard]] SystemResult<SecretBytes> exportPkcs8() const override {
        if (!key_) {
            return {{}, SystemError(EACCES, QStringLiteral("the key has a pass phrase"))};
        }
        if (isWorldReadable_) {
            return {{}, SystemError(EPERM, QStringLiteral("the key file is world-readable"))};
        }
        SecretBytes bytes = pkcs8Of(*key_);
        const bool isEncodable = !bytes.empty();
        return {std::move(bytes), isEncodable ? SystemError() : SystemError(ENOTSUP)};
    }

    [[nodiscard]] SystemResult<EncryptedKey> exportEncryptedPkcs8() const override { return {}; }

    [[nodiscard]] QueryResult<QString> algorithmGroup() const override {
        if (!key_) {
            return {};
        }
        return {Outcome::Complete, algorithmGroupOf(*key_)};
    }

private:
    KeyPointer key_;
    bool isWorldReadable_;
};

X509Pointer shared(const X509Pointer& certificate) {
    X509_up_ref(certificate.get());
    return X509Pointer(certificate.get());
}

SystemError inFile(const std::string& path, const SystemError& error) {
    return {error.code(), QFile::decodeName(path.c_str()) + QStringLiteral(": ") + error.message()};
}

class FileCertificate final : public Certificate {
public:
    // `fileCertificates` are the certificates in the file.
    FileCertificate(X509Pointer certificate, std::string pathWithoutSuffix,
                    std::shared_ptr<const FileCertificates> fileCertificates)
        : certificate_(std::move(certificate)),
          der_(derOf(*certificate_)),
          pathWithoutSuffix_(std::move(pathWithoutSuffix)),
          fileCertificates_(std::move(fileCertificates)) {}

    [[nodiscard]] std::vector<std::string> dnsNames() const override {
        return dnsNamesOf(*certificate_);
    }
    [[nodiscard]] std::string displayName() const override { return displayNameOf(*certificate_); }
    [[nodiscard]] QDateTime notBefore() const override { return notBeforeOf(*certificate_); }
    [[nodiscard]] QDateTime notAfter() const override { return notAfterOf(*certificate_); }
    [[nodiscard]] QByteArray serialNumber() const override { return serialNumberOf(*certificate_); }
    [[nodiscard]] QByteArrayView der() const override { return der_; }

    [[nodiscard]] SystemResult<std::unique_ptr<KeyHandle>> acquirePrivateKey() const override {
        SystemError error;
        for (const std::string_view suffix : {kCertificateSuffix, kKeySuffix}) {
            const std::string path = pathWithoutSuffix_ + std::string(suffix);
            const auto file = readFile(path, kMaxPemFileSize);
            if (!file.value) {
                error = inFile(path, file.error);
                continue;
            }
            auto [key, keyError] = firstPrivateKey(file.value->bytes.view());
            if (!key) {
                error = inFile(path, keyError);
            } else if (*key && !isKeyOf(*certificate_, **key)) {
                error = inFile(path, opensslError(kMismatch));
            } else {
                return {
                    std::make_unique<FileKeyHandle>(std::move(*key), file.value->isWorldReadable),
                    {}};
            }
        }
        return {nullptr, error};
    }

    [[nodiscard]] std::vector<std::unique_ptr<Certificate>> issuers() const override {
        std::vector<std::unique_ptr<Certificate>> found;
        if (isSelfSigned()) {
            return found;
        }
        const auto addIfIssuer = [this, &found](X509Pointer candidate) {
            if (hasIssued(*candidate, *certificate_)) {
                found.push_back(std::make_unique<FileCertificate>(
                    std::move(candidate), pathWithoutSuffix_, fileCertificates_));
            }
        };
        for (const X509Pointer& candidate : *fileCertificates_) {
            addIfIssuer(shared(candidate));
        }
        for (X509Pointer& candidate :
             systemAuthorities(*X509_get_issuer_name(certificate_.get()))) {
            addIfIssuer(std::move(candidate));
        }
        return found;
    }

    [[nodiscard]] bool isSelfSigned() const override {
        return platform::isSelfSigned(*certificate_);
    }
    [[nodiscard]] bool isWeak() const override { return platform::isWeak(*certificate_); }

private:
    static constexpr unsigned long kMismatch =
        ERR_PACK(ERR_LIB_X509, 0, X509_R_KEY_VALUES_MISMATCH);

    X509Pointer certificate_;
    QByteArray der_;
    std::string pathWithoutSuffix_;
    std::shared_ptr<const FileCertificates> fileCertificates_;
};

class FolderStore final : public CertificateStore {
public:
    // `paths` are the certificate files in order, without their suffix.
    explicit FolderStore(std::vector<std::string> paths) : paths_(std::move(paths)) {}

    [[nodiscard]] std::unique_ptr<Certificate> next() override {
        while (position_ < paths_.size()) {
            std::string& path = paths_[position_++];
            const auto file =
                readFile(path + std::string(kCertificateSuffix), kMaxPemFileSize).value;
            if (!file) {
                continue;
            }
            const auto certificates =
                std::make_shared<const FileCertificates>(certificatesIn(file->bytes.view()));
            if (!certificates->empty()) {
                return std::make_unique<FileCertificate>(shared(certificates->front()),
                                                         std::move(path), certificates);
            }
        }
        return nullptr;
    }

private:
    std::vector<std::string> paths_;
    std::size_t position_ = 0;
};

// Returns the paths of the certificate files in `folder`, without their suffix, in the byte order
// of the file names. The error is a value of errno.
SystemResult<std::vector<std::string>> certificateFilesIn(const std::string& folder) {
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
        return {{}, SystemError(static_cast<std::uint32_t>(error.value()))};
    }
    std::sort(names.begin(), names.end());
    for (std::string& name : names) {
        name.resize(name.size() - kCertificateSuffix.size());
        name.insert(0, folder + '/');
    }
    return {std::move(names), {}};
}

} // namespace

CertificateFolders::CertificateFolders(QString folder) : folder_(std::move(folder)) {}

SystemResult<std::unique_ptr<CertificateStore>>
CertificateFolders::openStore(QStringView name) const {
    const std::string folder = QFile::encodeName(joinPath(folder_, name.toString())).toStdString();
    auto [paths, error] = certificateFilesIn(folder);
    if (error) {
        return {nullptr, inFile(folder, error)};
    }
    return {std::make_unique<FolderStore>(std::move(paths)), {}};
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
