#pragma once

#include "platform/certificate_store.h"

#include <QDateTime>
#include <QString>

namespace quorin {

// Returns true if `now` is in the validity period of `certificate`.
[[nodiscard]] bool isValidAt(const QDateTime& now, const platform::Certificate& certificate);

// Returns the serial number in lower-case hexadecimal, two digits per byte, most significant byte
// first.
[[nodiscard]] QString serialNumberText(const platform::Certificate& certificate);

} // namespace quorin
