#include "platform/unix/pem_text.h"

#include <openssl/crypto.h>
#include <openssl/pem.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <string_view>
#include <utility>

namespace quorin::platform {

namespace {

// A decoded PEM block. Wiped before it is freed.
class PemBlock {
public:
    // Reads the next block from `bio`. Empty if there is none or it is malformed.
    explicit PemBlock(BIO* bio) {
        if (PEM_read_bio_ex(bio, &label_, &header_, &data_, &size_, PEM_FLAG_SECURE) != 1) {
            // On failure, OpenSSL before 3.0.8 leaves dangling pointers in the output parameters.
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
    [[nodiscard]] std::string_view label() const { return toView(label_); }
    [[nodiscard]] bool isEncrypted() const {
        return label() == PEM_STRING_PKCS8 || header().find("ENCRYPTED") != std::string_view::npos;
    }
    [[nodiscard]] const unsigned char* data() const { return data_; }
    [[nodiscard]] long size() const { return size_; }

private:
    [[nodiscard]] static std::string_view toView(const char* text) {
        return text != nullptr ? text : std::string_view();
    }
    [[nodiscard]] std::string_view header() const { return toView(header_); }

    char* label_ = nullptr;
    char* header_ = nullptr;
    unsigned char* data_ = nullptr;
    long size_ = 0;
};

BioPointer makeReader(QByteArrayView pem) {
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

struct KeyFormat {
    std::string_view label;
    KeyPointer (*read)(const PemBlock&);
};

constexpr std::array<KeyFormat, 4> kKeyFormats{{
    {PEM_STRING_PKCS8INF, keyFromPkcs8},
    {PEM_STRING_RSA, keyFromTraditional<EVP_PKEY_RSA>},
    {PEM_STRING_ECPRIVATEKEY, keyFromTraditional<EVP_PKEY_EC>},
    {PEM_STRING_DSA, keyFromTraditional<EVP_PKEY_DSA>},
}};

} // namespace

std::vector<X509Pointer> certificatesIn(QByteArrayView pem) {
    const OpensslErrorScope errors;
    std::vector<X509Pointer> certificates;
    const BioPointer reader = makeReader(pem);
    while (reader) {
        const PemBlock block(reader.get());
        if (!block) {
            break;
        }
        if (block.label() == PEM_STRING_X509) {
            const unsigned char* position = block.data();
            X509Pointer certificate(d2i_X509(nullptr, &position, block.size()));
            if (!certificate) {
                break;
            }
            certificates.push_back(std::move(certificate));
        }
    }
    return certificates;
}

SystemResult<std::optional<PemKey>> firstPrivateKey(QByteArrayView pem) {
    const OpensslErrorScope errors;
    const BioPointer reader = makeReader(pem);
    while (reader) {
        const PemBlock block(reader.get());
        if (!block) {
            break;
        }
        const auto format = std::find_if(
            kKeyFormats.begin(), kKeyFormats.end(),
            [&block](const KeyFormat& candidate) { return candidate.label == block.label(); });
        if (block.isEncrypted()) {
            return {KeyPointer(), {}};
        }
        if (format != kKeyFormats.end()) {
            if (KeyPointer key = format->read(block)) {
                return {std::move(key), {}};
            }
            break;
        }
    }
    // OpenSSL rejects a block with a malformed header without an error.
    const unsigned long code = ERR_peek_last_error();
    return {std::nullopt,
            opensslError(code != 0 ? code : ERR_PACK(ERR_LIB_PEM, 0, PEM_R_NO_START_LINE))};
}

} // namespace quorin::platform
