#pragma once

#include "platform/secret.h"

#include <QByteArrayView>

namespace quorin::platform {

// Returns `bytes` in Base64 in lines of 64 characters. Each line, including the last, ends in CR
// LF.
[[nodiscard]] SecretBytes base64LinesOf(QByteArrayView bytes);

} // namespace quorin::platform
