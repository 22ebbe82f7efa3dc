#include "platform/windows/key_export.h"

#include <wincrypt.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <vector>

namespace quorin::platform {
namespace {

constexpr NCRYPT_KEY_HANDLE kKey = 1234;

// What a call of NCryptExportKey() was passed.
struct ExportCall {
    NCRYPT_KEY_HANDLE key = 0;
    std::wstring format;
    DWORD size = 0;
    DWORD flags = 0;
    bool hasParameters = false;
    std::wstring secret; // with its terminating NUL
    std::string algorithm;
    CRYPT_PKCS12_PBE_PARAMS encryption{};
    std::string salt;
};

// A double of NCryptExportKey() and its behaviour. One exists at a time.
class ExportDouble {
public:
    ExportDouble() { current = this; }
    ~ExportDouble() { current = nullptr; }
    ExportDouble(const ExportDouble&) = delete;
    ExportDouble& operator=(const ExportDouble&) = delete;

    static SECURITY_STATUS WINAPI exportKey(NCRYPT_KEY_HANDLE key, NCRYPT_KEY_HANDLE exportKey,
                                            LPCWSTR format, NCryptBufferDesc* parameters,
                                            PBYTE output, DWORD size, DWORD* written, DWORD flags) {
        EXPECT_EQ(exportKey, 0u);
        ExportCall& call = current->calls.emplace_back();
        call.key = key;
        call.format = format;
        call.size = size;
        call.flags = flags;
        if (parameters != nullptr) {
            read(*parameters, call);
        }
        if (output == nullptr) {
            *written = current->neededSize;
            return current->sizeStatus;
        }
        EXPECT_LE(current->key.size(), size);
        std::copy(current->key.begin(), current->key.end(), output);
        *written = static_cast<DWORD>(current->key.size());
        return current->dataStatus;
    }

    std::string key = "the key";
    DWORD neededSize = 7;
    SECURITY_STATUS sizeStatus = ERROR_SUCCESS;
    SECURITY_STATUS dataStatus = ERROR_SUCCESS;
    std::vector<ExportCall> calls;

private:
    static void read(const NCryptBufferDesc& parameters, ExportCall& call) {
        call.hasParameters = true;
        EXPECT_EQ(parameters.ulVersion, 0u);
        EXPECT_EQ(parameters.cBuffers, 3u);
        for (ULONG i = 0; i < parameters.cBuffers; ++i) {
            const NCryptBuffer& buffer = parameters.pBuffers[i];
            const std::string content(static_cast<const char*>(buffer.pvBuffer), buffer.cbBuffer);
            switch (buffer.BufferType) {
            case NCRYPTBUFFER_PKCS_SECRET:
                call.secret.resize(content.size() / sizeof(wchar_t));
                std::memcpy(call.secret.data(), content.data(), content.size());
                break;
            case NCRYPTBUFFER_PKCS_ALG_OID:
                call.algorithm = content;
                break;
            case NCRYPTBUFFER_PKCS_ALG_PARAM:
                ASSERT_GE(content.size(), sizeof call.encryption);
                std::memcpy(&call.encryption, content.data(), sizeof call.encryption);
                call.salt = content.substr(sizeof call.encryption);
                break;
            default:
                ADD_FAILURE() << "unknown parameter " << buffer.BufferType;
            }
        }
    }

    static inline ExportDouble* current = nullptr;
};

std::string text(const SecretBytes& bytes) {
    return bytes.view().toByteArray().toStdString();
}

TEST(KeyExportTest, ExportsInPlainWithoutParameters) {
    ExportDouble system;
    const auto exported = exportPlain(kKey, &ExportDouble::exportKey);
    EXPECT_EQ(text(exported.value), "the key");
    EXPECT_FALSE(exported.error);
    ASSERT_EQ(system.calls.size(), 2u);
    for (const ExportCall& call : system.calls) {
        EXPECT_EQ(call.key, kKey);
        EXPECT_EQ(call.format, L"PKCS8_PRIVATEKEY");
        EXPECT_EQ(call.flags, 0u);
        EXPECT_FALSE(call.hasParameters);
    }
    EXPECT_EQ(system.calls[1].size, 7u);
}

TEST(KeyExportTest, TruncatesToExportedSize) {
    ExportDouble system;
    system.neededSize = 100;
    EXPECT_EQ(text(exportPlain(kKey, &ExportDouble::exportKey).value), "the key");
    EXPECT_EQ(text(exportEncrypted(kKey, &ExportDouble::exportKey).value.pkcs8), "the key");
}

TEST(KeyExportTest, ReturnsStatusOfFailedCall) {
    for (const bool isSizeKnown : {false, true}) {
        ExportDouble system;
        (isSizeKnown ? system.dataStatus : system.sizeStatus) = NTE_NOT_SUPPORTED;
        const auto plain = exportPlain(kKey, &ExportDouble::exportKey);
        EXPECT_TRUE(plain.value.empty());
        EXPECT_EQ(plain.error.code(), 0x80090029u);
        EXPECT_FALSE(plain.error.message().isEmpty());
        const auto encrypted = exportEncrypted(kKey, &ExportDouble::exportKey);
        EXPECT_TRUE(encrypted.value.pkcs8.empty());
        EXPECT_TRUE(encrypted.value.passPhrase.empty());
        EXPECT_EQ(encrypted.error.code(), 0x80090029u);
    }
}

TEST(KeyExportTest, EncryptsWithTripleDes) {
    ExportDouble system;
    const auto exported = exportEncrypted(kKey, &ExportDouble::exportKey);
    EXPECT_EQ(text(exported.value.pkcs8), "the key");
    EXPECT_FALSE(exported.error);
    ASSERT_EQ(system.calls.size(), 2u);
    for (const ExportCall& call : system.calls) {
        EXPECT_EQ(call.key, kKey);
        EXPECT_EQ(call.format, L"PKCS8_PRIVATEKEY");
        EXPECT_EQ(call.flags, static_cast<DWORD>(NCRYPT_SILENT_FLAG));
        EXPECT_EQ(call.algorithm, std::string("1.2.840.113549.1.12.1.3\0", 24));
        EXPECT_EQ(call.encryption.iIterations, 1);
        EXPECT_EQ(call.encryption.cbSalt, 8u);
        EXPECT_EQ(call.salt.size(), 8u);
    }
    EXPECT_EQ(system.calls[0].secret, system.calls[1].secret);
    EXPECT_EQ(system.calls[0].salt, system.calls[1].salt);
}

TEST(KeyExportTest, ReturnsPassPhraseGivenToSystem) {
    ExportDouble system;
    const auto exported = exportEncrypted(kKey, &ExportDouble::exportKey);
    const std::string passPhrase = text(exported.value.passPhrase);
    EXPECT_EQ(passPhrase.size(), 32u);
    EXPECT_TRUE(std::all_of(passPhrase.begin(), passPhrase.end(),
                            [](char c) { return c > ' ' && c < '\x7f'; }));
    ASSERT_EQ(system.calls.size(), 2u);
    EXPECT_EQ(system.calls[1].secret, std::wstring(passPhrase.begin(), passPhrase.end()) + L'\0');
}

TEST(KeyExportTest, EachExportHasItsOwnPassPhrase) {
    ExportDouble system;
    const auto first = exportEncrypted(kKey, &ExportDouble::exportKey);
    const auto second = exportEncrypted(kKey, &ExportDouble::exportKey);
    EXPECT_NE(text(first.value.passPhrase), text(second.value.passPhrase));
    EXPECT_NE(system.calls.front().salt, system.calls.back().salt);
}

} // namespace
} // namespace quorin::platform
