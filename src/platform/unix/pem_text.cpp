#include "platform/unix/pem_text.h"

#include <openssl/crypto.h>
#include <openssl/pem.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <string_view>

namespace platform {

namespace {

// What stands between a BEGIN and an END line, decoded. Wiped before it is freed.
class PemBlock {
public:
    // Reads the next block of `bio`; empty when there is none, or a broken one.
    explicit PemBlock(BIO* bio) {
        if (PEM_read_bio_ex(bio, &label_, &header_, &data_, &size_, PEM_FLAG_SECURE) != 1) {
            // OpenSSL before 3.0.8 leaves addresses behind that it has freed.
            label_ = header_ = nullptr;
            data_ = nullptr;
            size_ = 0;
        }
    }
    ~PemBlock() {
        OPENSSL_secure_clear_free(label_, label().size());
        OPENSSL_secure_clear_free(header_, header().size());
        OPENSSL_secure_clear_free(data_, static_cast<std::size_t>(size_));
    }
    PemBlock(const PemBlock&) = delete;
    PemBlock& operator=(const PemBlock&) = delete;

    [[nodiscard]] explicit operator bool() const { return data_ != nullptr; }
    [[nodiscard]] std::string_view label() const { return text(label_); }
    [[nodiscard]] bool isEncrypted() const {
        return label() == PEM_STRING_PKCS8 || header().find("ENCRYPTED") != std::string_view::npos;
    }
    [[nodiscard]] const unsigned char* data() const { return data_; }
    [[nodiscard]] long size() const { return size_; }

private:
    [[nodiscard]] static std::string_view text(const char* terminated) {
        return terminated != nullptr ? terminated : std::string_view();
    }
    [[nodiscard]] std::string_view header() const { return text(header_); }

    char* label_ = nullptr;
    char* header_ = nullptr;
    unsigned char* data_ = nullptr;
    long size_ = 0;
};

BioPointer readerOf(QByteArrayView pem) {
    return BioPointer(pem.size() <= INT_MAX
                          ? BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size()))
                          : nullptr);
}

KeyPointer keyFromPkcs8(const PemBlock& block) {
    const unsigned char* position = block.data();
    const Pkcs8Pointer structure(d2i_PKCS8_PRIV_KEY_INFO(nullptr, &position, block.size()));
    return KeyPointer(structure ? EVP_PKCS82PKEY(structure.get()) : nullptr);
}

template<int Type>
KeyPointer keyFromTraditional(const PemBlock& block) {
    const unsigned char* position = block.data();
    return KeyPointer(d2i_PrivateKey(Type, nullptr, &position, block.size()));
}

struct KeyForm {
    std::string_view label;
    KeyPointer (*read)(const PemBlock&);
};

constexpr std::array<KeyForm, 4> kKeyForms{{
    {PEM_STRING_PKCS8INF, keyFromPkcs8},
    {PEM_STRING_RSA, keyFromTraditional<EVP_PKEY_RSA>},
    {PEM_STRING_ECPRIVATEKEY, keyFromTraditional<EVP_PKEY_EC>},
    {PEM_STRING_DSA, keyFromTraditional<EVP_PKEY_DSA>},
}};

} // namespace

X509Pointer firstCertificate(QByteArrayView pem) {
    const OpensslErrorsKept errors;
    const BioPointer reader = readerOf(pem);
    while (reader) {
        const PemBlock block(reader.get());
        if (!block) {
            break;
        }
        if (block.label() == PEM_STRING_X509) {
            const unsigned char* position = block.data();
            return X509Pointer(d2i_X509(nullptr, &position, block.size()));
        }
    }
    return nullptr;
}

std::optional<PemKey> firstPrivateKey(QByteArrayView pem) {
    const OpensslErrorsKept errors;
    const BioPointer reader = readerOf(pem);
    while (reader) {
        const PemBlock block(reader.get());
        if (!block) {
            break;
        }
        const auto form =
            std::find_if(kKeyForms.begin(), kKeyForms.end(), [&block](const KeyForm& candidate) {
                return candidate.label == block.label();
            });
        if (block.isEncrypted()) {
            return KeyPointer();
        }
        if (form != kKeyForms.end()) {
            KeyPointer key = form->read(block);
            return key ? std::optional(std::move(key)) : std::nullopt;
        }
    }
    return std::nullopt;
}

} // namespace platform
