#include "support/private_key_double_windows.h"

#include "platform/windows/system.h"
#include "support/import_table_windows.h"

#include <ncrypt.h>
#include <wincrypt.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

namespace quorin::test {

namespace {

// The content of the key file; empty if there is none.
std::string key;
int keysInUse = 0;

// No handle of the system has this value: it is the address of an object of this program.
HCRYPTPROV_OR_NCRYPT_KEY_HANDLE handleOfKey() {
    return reinterpret_cast<HCRYPTPROV_OR_NCRYPT_KEY_HANDLE>(&key);
}

// Returns `bytes` as a function that is called twice does: first without a buffer.
SECURITY_STATUS copy(std::string_view bytes, BYTE* buffer, DWORD bufferSize, DWORD* size) {
    *size = static_cast<DWORD>(bytes.size());
    if (buffer == nullptr) {
        return ERROR_SUCCESS;
    }
    if (bufferSize < bytes.size()) {
        return NTE_BUFFER_TOO_SMALL;
    }
    std::memcpy(buffer, bytes.data(), bytes.size());
    return ERROR_SUCCESS;
}

BOOL WINAPI acquirePrivateKey(PCCERT_CONTEXT, DWORD flags, void*,
                              HCRYPTPROV_OR_NCRYPT_KEY_HANDLE* handle, DWORD* keySpec,
                              BOOL* callerFrees) {
    if ((flags & CRYPT_ACQUIRE_ONLY_NCRYPT_KEY_FLAG) == 0) {
        SetLastError(static_cast<DWORD>(NTE_BAD_FLAGS));
        return FALSE;
    }
    ++keysInUse;
    *handle = handleOfKey();
    *keySpec = CERT_NCRYPT_KEY_SPEC;
    *callerFrees = TRUE;
    return TRUE;
}

SECURITY_STATUS WINAPI exportKey(NCRYPT_KEY_HANDLE handle, NCRYPT_KEY_HANDLE, LPCWSTR format,
                                 NCryptBufferDesc* parameters, BYTE* buffer, DWORD bufferSize,
                                 DWORD* size, DWORD) {
    if (handle != handleOfKey()) {
        return NTE_INVALID_HANDLE;
    }
    const bool isPlain = parameters == nullptr;
    if (std::wcscmp(format, NCRYPT_PKCS8_PRIVATE_KEY_BLOB) != 0 || !isPlain ||
        std::getenv("QUORIN_TEST_REFUSES_PLAIN_EXPORT") != nullptr) {
        return NTE_NOT_SUPPORTED;
    }
    return copy(key, buffer, bufferSize, size);
}

SECURITY_STATUS WINAPI getProperty(NCRYPT_HANDLE handle, LPCWSTR property, BYTE* buffer,
                                   DWORD bufferSize, DWORD* size, DWORD) {
    if (handle != handleOfKey()) {
        return NTE_INVALID_HANDLE;
    }
    if (std::wcscmp(property, NCRYPT_ALGORITHM_GROUP_PROPERTY) != 0) {
        return NTE_NOT_SUPPORTED;
    }
    // The object identifier of the algorithm of EC keys, in DER.
    constexpr std::string_view kEcPublicKey = "\x06\x07\x2a\x86\x48\xce\x3d\x02\x01";
    const std::wstring group = key.find(kEcPublicKey) != std::string::npos ? L"ECDSA" : L"RSA";
    return copy(
        {reinterpret_cast<const char*>(group.c_str()), (group.size() + 1) * sizeof(wchar_t)},
        buffer, bufferSize, size);
}

SECURITY_STATUS WINAPI freeObject(NCRYPT_HANDLE handle) {
    if (handle != handleOfKey()) {
        return NTE_INVALID_HANDLE;
    }
    --keysInUse;
    return ERROR_SUCCESS;
}

} // namespace

void installPrivateKeyDouble() {
    const wchar_t* const path = _wgetenv(L"QUORIN_TEST_PRIVATE_KEY");
    if (path == nullptr) {
        return;
    }
    std::ifstream file(std::filesystem::path(path), std::ios::binary);
    if (!file) {
        return;
    }
    key.assign(std::istreambuf_iterator<char>(file), {});
    replaceImport("CryptAcquireCertificatePrivateKey", acquirePrivateKey);
    replaceImport("NCryptExportKey", exportKey);
    replaceImport("NCryptGetProperty", getProperty);
    replaceImport("NCryptFreeObject", freeObject);
}

void reportKeysInUse() {
    if (keysInUse != 0) {
        std::fprintf(stderr, "test host: %d key handles are in use\n", keysInUse);
    }
}

} // namespace quorin::test
