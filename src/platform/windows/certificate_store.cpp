#include "platform/certificate_store.h"

#include "platform/windows/key_export.h"
#include "platform/windows/system.h"

#include <ncrypt.h>
#include <wincrypt.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <type_traits>
#include <utility>

namespace quorin::platform {

namespace {

struct StoreCloser {
    void operator()(HCERTSTORE store) const noexcept { CertCloseStore(store, 0); }
};
using Store = std::unique_ptr<std::remove_pointer_t<HCERTSTORE>, StoreCloser>;

struct ContextDeleter {
    void operator()(PCCERT_CONTEXT context) const noexcept { CertFreeCertificateContext(context); }
};
using Context = std::unique_ptr<const CERT_CONTEXT, ContextDeleter>;

// A handle to a key in CNG key storage or in a legacy provider. Freed by the destructor if the
// system requires the caller to free it.
class Key {
public:
    // Returns nothing on failure; GetLastError() returns the reason.
    [[nodiscard]] static std::optional<Key> acquire(PCCERT_CONTEXT certificate) {
        Key key;
        BOOL callerFrees = FALSE;
        if (CryptAcquireCertificatePrivateKey(certificate, CRYPT_ACQUIRE_ONLY_NCRYPT_KEY_FLAG,
                                              nullptr, &key.handle_, &key.keySpec_,
                                              &callerFrees) == FALSE) {
            return std::nullopt;
        }
        key.isOwned_ = callerFrees != FALSE;
        return key;
    }

    ~Key() {
        if (!isOwned_) {
            return;
        }
        if (keySpec_ == CERT_NCRYPT_KEY_SPEC) {
            NCryptFreeObject(handle_);
        } else {
            CryptReleaseContext(handle_, 0);
        }
    }

    Key(Key&& other) noexcept
        : handle_(other.handle_),
          keySpec_(other.keySpec_),
          isOwned_(std::exchange(other.isOwned_, false)) {}
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    Key& operator=(Key&&) = delete;

    [[nodiscard]] NCRYPT_KEY_HANDLE handle() const noexcept { return handle_; }

private:
    Key() = default;

    HCRYPTPROV_OR_NCRYPT_KEY_HANDLE handle_ = 0;
    DWORD keySpec_ = 0;
    bool isOwned_ = false;
};

QDateTime utc(const SYSTEMTIME& time) {
    return {QDate(time.wYear, time.wMonth, time.wDay),
            QTime(time.wHour, time.wMinute, time.wSecond, time.wMilliseconds), Qt::UTC};
}

QDateTime utc(const FILETIME& time) {
    SYSTEMTIME fields{};
    return FileTimeToSystemTime(&time, &fields) != FALSE ? utc(fields) : QDateTime();
}

// Returns one name of the subject, or several names, each but the last followed by a NUL. Empty if
// there is none.
std::string nameString(PCCERT_CONTEXT certificate, DWORD type, DWORD flags) {
    const DWORD size = CertGetNameStringA(certificate, type, flags, nullptr, nullptr, 0);
    if (size <= 1) { // only the terminating NUL
        return {};
    }
    std::string names(size, '\0');
    const DWORD written = CertGetNameStringA(certificate, type, flags, nullptr, names.data(), size);
    names.resize(written > 0 ? written - 1 : 0);
    return names;
}

constexpr QStringView kIntermediateStore = u"CA";

// Signatures with less than 112 bits of security, and the length of RSA and DSA keys that provides
// as many.
constexpr std::array<std::string_view, 7> kWeakSignatures{
    szOID_RSA_MD2RSA,         szOID_RSA_MD4RSA,   szOID_RSA_MD5RSA, szOID_RSA_SHA1RSA,
    szOID_OIWSEC_sha1RSASign, szOID_X957_SHA1DSA, szOID_ECDSA_SHA1};
constexpr DWORD kMinKeyBits = 2048;

SystemError lastError() {
    return SystemError(GetLastError());
}

// Returns null on failure; GetLastError() returns the reason.
Store openLocalMachineStore(QStringView name) {
    const QString text = name.toString();
    return Store(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0,
                               CERT_SYSTEM_STORE_LOCAL_MACHINE | CERT_STORE_READONLY_FLAG,
                               wide(text)));
}

class SystemKeyHandle final : public KeyHandle {
public:
    explicit SystemKeyHandle(Key key) : key_(std::move(key)) {}

    SystemResult<SecretBytes> exportPkcs8() const override { return exportPlain(key_.handle()); }

    SystemResult<EncryptedKey> exportEncryptedPkcs8() const override {
        return exportEncrypted(key_.handle());
    }

    QueryResult<QString> algorithmGroup() const override {
        DWORD size = 0;
        if (const SECURITY_STATUS status = readGroupInto(nullptr, 0, size);
            status != ERROR_SUCCESS) {
            return {Outcome::NoSize, {}, SystemError(static_cast<std::uint32_t>(status))};
        }
        // One element more guarantees a terminating NUL.
        std::vector<wchar_t> name(size / sizeof(wchar_t) + 1);
        DWORD written = 0;
        if (const SECURITY_STATUS status = readGroupInto(name.data(), size, written);
            status != ERROR_SUCCESS) {
            return {Outcome::NoData, {}, SystemError(static_cast<std::uint32_t>(status))};
        }
        return {Outcome::Complete, QString::fromWCharArray(name.data())};
    }

private:
    SECURITY_STATUS readGroupInto(wchar_t* buffer, DWORD size, DWORD& needed) const {
        return NCryptGetProperty(key_.handle(), NCRYPT_ALGORITHM_GROUP_PROPERTY,
                                 reinterpret_cast<BYTE*>(buffer), size, &needed,
                                 NCRYPT_SILENT_FLAG);
    }

    Key key_;
};

class SystemCertificate final : public Certificate {
public:
    explicit SystemCertificate(Context context) : context_(std::move(context)) {}

    std::vector<std::string> dnsNames() const override {
        const std::string all =
            nameString(context_.get(), CERT_NAME_DNS_TYPE, CERT_NAME_SEARCH_ALL_NAMES_FLAG);
        std::vector<std::string> names;
        for (std::size_t begin = 0; begin < all.size();) {
            const std::size_t end = std::min(all.find('\0', begin), all.size());
            names.push_back(all.substr(begin, end - begin));
            begin = end + 1;
        }
        return names;
    }

    std::string displayName() const override {
        return nameString(context_.get(), CERT_NAME_SIMPLE_DISPLAY_TYPE, 0);
    }

    QDateTime notBefore() const override { return utc(context_->pCertInfo->NotBefore); }
    QDateTime notAfter() const override { return utc(context_->pCertInfo->NotAfter); }

    QByteArray serialNumber() const override {
        const CRYPT_INTEGER_BLOB& number = context_->pCertInfo->SerialNumber;
        const QByteArrayView bytes(number.pbData, static_cast<qsizetype>(number.cbData));
        // Some versions of Windows include the sign byte.
        return bytes.chopped(bytes.size() > 1 && bytes.back() == '\0' ? 1 : 0).toByteArray();
    }

    QByteArrayView der() const override {
        return {context_->pbCertEncoded, static_cast<qsizetype>(context_->cbCertEncoded)};
    }

    SystemResult<std::unique_ptr<KeyHandle>> acquirePrivateKey() const override {
        std::optional<Key> key = Key::acquire(context_.get());
        if (!key) {
            return {nullptr, lastError()};
        }
        return {std::make_unique<SystemKeyHandle>(*std::move(key)), {}};
    }

    std::vector<std::unique_ptr<Certificate>> issuers() const override {
        std::vector<std::unique_ptr<Certificate>> found;
        const Store store = openLocalMachineStore(kIntermediateStore);
        DWORD failed = CERT_STORE_SIGNATURE_FLAG; // the checks that are requested and then failed
        Context issuer;
        while (store) {
            // The call frees the previous context.
            issuer.reset(CertGetIssuerCertificateFromStore(store.get(), context_.get(),
                                                           issuer.release(), &failed));
            if (!issuer) {
                break;
            }
            if (failed == 0) {
                found.push_back(std::make_unique<SystemCertificate>(
                    Context(CertDuplicateCertificateContext(issuer.get()))));
            }
            failed = CERT_STORE_SIGNATURE_FLAG;
        }
        return found;
    }

    bool isSelfSigned() const override {
        return CertCompareCertificateName(X509_ASN_ENCODING, &context_->pCertInfo->Subject,
                                          &context_->pCertInfo->Issuer) != FALSE;
    }

    bool isWeak() const override {
        const std::string_view signature = context_->pCertInfo->SignatureAlgorithm.pszObjId;
        CERT_PUBLIC_KEY_INFO& key = context_->pCertInfo->SubjectPublicKeyInfo;
        // Elliptic curves in use are strong enough, and Wine does not know the length of their
        // keys.
        const bool isEc = key.Algorithm.pszObjId == std::string_view(szOID_ECC_PUBLIC_KEY);
        return std::find(kWeakSignatures.begin(), kWeakSignatures.end(), signature) !=
                   kWeakSignatures.end() ||
               (!isEc && CertGetPublicKeyLength(X509_ASN_ENCODING, &key) < kMinKeyBits);
    }

private:
    Context context_;
};

class SystemStore final : public CertificateStore {
public:
    explicit SystemStore(Store store) : store_(std::move(store)) {}

    std::unique_ptr<Certificate> next() override {
        if (ended_) {
            return nullptr;
        }
        // The call frees the previous context.
        current_.reset(CertEnumCertificatesInStore(store_.get(), current_.release()));
        if (!current_) {
            ended_ = true; // another call would restart the enumeration
            return nullptr;
        }
        return std::make_unique<SystemCertificate>(
            Context(CertDuplicateCertificateContext(current_.get())));
    }

private:
    Store store_;
    Context current_; // must be freed before store_
    bool ended_ = false;
};

class LocalMachineCertificates final : public CertificateSystem {
public:
    SystemResult<std::unique_ptr<CertificateStore>> openStore(QStringView name) const override {
        Store store = openLocalMachineStore(name);
        if (!store) {
            return {nullptr, lastError()};
        }
        return {std::make_unique<SystemStore>(std::move(store)), {}};
    }

    QDateTime currentTime() const override {
        SYSTEMTIME now{};
        GetSystemTime(&now);
        return utc(now);
    }

    QueryResult<SecretBytes> toBase64(QByteArrayView bytes) const override {
        const auto* const data = reinterpret_cast<const BYTE*>(bytes.data());
        const auto length = static_cast<DWORD>(bytes.size());
        DWORD size = 0;
        if (CryptBinaryToStringA(data, length, CRYPT_STRING_BASE64, nullptr, &size) == FALSE) {
            return {Outcome::NoSize, {}, lastError()};
        }
        SecretBytes text(size);
        if (CryptBinaryToStringA(data, length, CRYPT_STRING_BASE64, text.data(), &size) == FALSE) {
            return {Outcome::NoData, {}, lastError()};
        }
        text.truncate(qstrnlen(text.data(), text.size()));
        return {Outcome::Complete, std::move(text)};
    }
};

} // namespace

const CertificateSystem& localMachineCertificates() {
    static const LocalMachineCertificates certificates;
    return certificates;
}

} // namespace quorin::platform
