#pragma once

#include <QString>

#include <optional>

namespace quorin {

// Returns a log message that describes why Qt has no usable TLS backend, or nothing if it has one.
// Without a backend, QSslSocket::startServerEncryption() leaves a connection unencrypted.
[[nodiscard]] std::optional<QString> missingTlsBackend();

} // namespace quorin
