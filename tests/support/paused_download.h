#pragma once

#include "support/client.h"

#include <memory>

namespace quorin::test {

inline constexpr qsizetype kMiB = 1024 * 1024;

// More than the system buffers between a gateway and a client that does not read.
inline constexpr qsizetype kLargeSize = 48 * kMiB;

// Requests `target`, a streamed file of `size` bytes, and reads the header only. The gateway cannot
// send all of a file of kLargeSize until the caller reads on.
[[nodiscard]] std::unique_ptr<Client> startDownload(quint16 port, const QByteArray& target,
                                                    qsizetype size);

} // namespace quorin::test
