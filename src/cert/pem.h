#pragma once

#include "platform/certificate_store.h"

#include <QByteArrayView>

namespace quorin {

enum class PemType : int { Certificate = 1, PrivateKey = 2 };

// `bytes`, which are DER, as PEM text; empty for a type other than these two, and when the system
// cannot encode them, which is logged. The armour's lines end in LF, those between in CR LF: PEM
// readers take both.
[[nodiscard]] platform::SecretBytes
toPem(QByteArrayView bytes, PemType type,
      const platform::CertificateSystem& system = platform::localMachineCertificates());

} // namespace quorin
