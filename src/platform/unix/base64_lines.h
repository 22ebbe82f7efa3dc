#pragma once

#include "platform/secret.h"

#include <QByteArrayView>

namespace platform {

// `bytes` in Base64, in lines of 64 characters that each end in CR LF.
[[nodiscard]] SecretBytes base64LinesOf(QByteArrayView bytes);

} // namespace platform
