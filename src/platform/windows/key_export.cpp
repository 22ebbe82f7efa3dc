#include "platform/windows/key_export.h"

#include <wincrypt.h>

#include <QRandomGenerator>

#include <array>
#include <string_view>

namespace quorin::platform {

namespace {

// 64 characters: each random one adds 6 bits to the pass phrase.
constexpr std::string_view kPassPhraseCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
constexpr std::size_t kPassPhraseLength = 32;

SecretBytes randomPassPhrase() {
    static_assert(kPassPhraseCharacters.size() == 64);
    SecretBytes passPhrase(kPassPhraseLength);
    QRandomGenerator* const generator = QRandomGenerator::system();
    for (std::size_t i = 0; i < kPassPhraseLength; ++i) {
        passPhrase.data()[i] = kPassPhraseCharacters[generator->generate() % 64];
    }
    return passPhrase;
}

// Returns `text`, which is ASCII, in UTF-16 with a terminating NUL.
SecretBytes toWide(const SecretBytes& text) {
    SecretBytes wide((text.size() + 1) * sizeof(wchar_t));
    std::size_t position = 0;
    for (const char character : text.view()) {
        wide.data()[position] = character; // the low byte; the high byte is zero
        position += sizeof(wchar_t);
    }
    return wide;
}

// pbeWithSHAAnd3-KeyTripleDES-CBC: every version of Windows can encrypt with it and every version
// of OpenSSL can decrypt it. Its weaknesses do not matter, as the encrypted key does not leave the
// process.
struct EncryptionParameters {
    static constexpr ULONG kSaltSize = 8;

    // The pass phrase is random, so that repeated hashing would not make it harder to guess.
    CRYPT_PKCS12_PBE_PARAMS header{1, kSaltSize};
    std::array<BYTE, kSaltSize> salt{};
};
static_assert(sizeof(EncryptionParameters) ==
              sizeof(CRYPT_PKCS12_PBE_PARAMS) + EncryptionParameters::kSaltSize);

NCryptBuffer buffer(ULONG type, void* data, std::size_t size) {
    return {static_cast<ULONG>(size), type, data};
}

// Exports in the format that `parameters` describe; unencrypted if it is null.
SystemResult<SecretBytes> exportPkcs8(NCRYPT_KEY_HANDLE key, NCryptBufferDesc* parameters,
                                      DWORD flags, ExportKeyFunction exportKey) {
    const auto exportInto = [&](SecretBytes* bytes, DWORD& written) {
        return exportKey(key, 0, NCRYPT_PKCS8_PRIVATE_KEY_BLOB, parameters,
                         bytes != nullptr ? reinterpret_cast<BYTE*>(bytes->data()) : nullptr,
                         bytes != nullptr ? static_cast<DWORD>(bytes->size()) : 0, &written, flags);
    };
    DWORD size = 0;
    if (const SECURITY_STATUS status = exportInto(nullptr, size); status != ERROR_SUCCESS) {
        return {{}, SystemError(static_cast<std::uint32_t>(status))};
    }
    SecretBytes bytes(size);
    DWORD written = 0;
    if (const SECURITY_STATUS status = exportInto(&bytes, written); status != ERROR_SUCCESS) {
        return {{}, SystemError(static_cast<std::uint32_t>(status))};
    }
    bytes.truncate(written);
    return {std::move(bytes), {}};
}

} // namespace

SystemResult<SecretBytes> exportPlain(NCRYPT_KEY_HANDLE key, ExportKeyFunction exportKey) {
    return exportPkcs8(key, nullptr, 0, exportKey);
}

SystemResult<EncryptedKey> exportEncrypted(NCRYPT_KEY_HANDLE key, ExportKeyFunction exportKey) {
    SecretBytes passPhrase = randomPassPhrase();
    SecretBytes secret = toWide(passPhrase);
    char algorithm[] = szOID_PKCS_12_pbeWithSHA1And3KeyTripleDES;
    EncryptionParameters encryption;
    for (BYTE& byte : encryption.salt) {
        byte = static_cast<BYTE>(QRandomGenerator::system()->generate());
    }
    std::array<NCryptBuffer, 3> buffers{
        buffer(NCRYPTBUFFER_PKCS_SECRET, secret.data(), secret.size()),
        buffer(NCRYPTBUFFER_PKCS_ALG_OID, algorithm, sizeof algorithm),
        buffer(NCRYPTBUFFER_PKCS_ALG_PARAM, &encryption, sizeof encryption)};
    NCryptBufferDesc parameters{NCRYPTBUFFER_VERSION, buffers.size(), buffers.data()};
    // Without NCRYPT_SILENT_FLAG, a key that requires confirmation would wait for a user.
    auto [bytes, error] = exportPkcs8(key, &parameters, NCRYPT_SILENT_FLAG, exportKey);
    if (bytes.empty()) {
        return {{}, error};
    }
    return {{std::move(bytes), std::move(passPhrase)}, {}};
}

} // namespace quorin::platform
