#pragma once

#include "platform/certificate_store.h"

#include <QByteArray>
#include <QDateTime>

#include <cstddef>
#include <vector>

namespace quorin {

// The maximum number of intermediate certificates that the gateway sends.
inline constexpr std::size_t kMaxIntermediates = 8;

// Returns, in DER, the intermediate certificates that the machine has for `certificate`: its
// issuer, the issuer of that one, and so on. The chain ends before a self-signed certificate. Skips
// certificates that are not valid at `now` and those that are too weak to be sent.
[[nodiscard]] std::vector<QByteArray> intermediatesOf(const platform::Certificate& certificate,
                                                      const QDateTime& now);

} // namespace quorin
