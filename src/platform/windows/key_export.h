#pragma once

#include "platform/certificate_store.h"
#include "platform/windows/system.h"

#include <ncrypt.h>

// Export of private keys. The functions call NCryptExportKey() through `exportKey`, so that tests
// can replace it.
namespace quorin::platform {

using ExportKeyFunction = decltype(&NCryptExportKey);

// Returns the key as unencrypted PKCS #8 in DER. The system refuses unless the export policy of the
// key includes NCRYPT_ALLOW_PLAINTEXT_EXPORT_FLAG.
[[nodiscard]] SystemResult<SecretBytes> exportPlain(NCRYPT_KEY_HANDLE key,
                                                    ExportKeyFunction exportKey = &NCryptExportKey);

// Returns the key encrypted with a new random pass phrase. The system refuses unless the export
// policy of the key includes NCRYPT_ALLOW_EXPORT_FLAG.
[[nodiscard]] SystemResult<EncryptedKey>
exportEncrypted(NCRYPT_KEY_HANDLE key, ExportKeyFunction exportKey = &NCryptExportKey);

} // namespace quorin::platform
