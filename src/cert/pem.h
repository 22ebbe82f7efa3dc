#pragma once

#include "platform/certificate_store.h"

#include <QByteArrayView>

namespace quorin {

enum class PemType : int { Certificate = 1, PrivateKey = 2 };

// Returns `bytes`, which are DER, as PEM text. Returns an empty text if `type` is neither of the
// above or the system cannot encode the bytes; only the latter is logged. The BEGIN and END lines
// end in LF, the Base64 lines in CR LF (docs/compatibility.md).
[[nodiscard]] platform::SecretBytes
toPem(QByteArrayView bytes, PemType type,
      const platform::CertificateSystem& system = platform::localMachineCertificates());

} // namespace quorin
