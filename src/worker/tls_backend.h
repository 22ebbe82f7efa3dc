#pragma once

#include <QString>

#include <optional>

namespace quorin {

// Returns what Qt lacks to serve TLS, for the log; nothing if its TLS backend works. Without one,
// QSslSocket::startServerEncryption() leaves a connection unencrypted.
[[nodiscard]] std::optional<QString> missingTlsBackend();

} // namespace quorin
