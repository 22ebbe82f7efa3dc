#pragma once

#include <QByteArray>
#include <QDateTime>

#include <openssl/x509.h>

#include <string>
#include <vector>

// Fields of a certificate, in the formats of Certificate (platform/certificate_store.h). Names are
// in UTF-8.
namespace quorin::platform {

[[nodiscard]] std::vector<std::string> dnsNamesOf(const X509& certificate);
[[nodiscard]] std::string displayNameOf(const X509& certificate);
[[nodiscard]] QDateTime notBeforeOf(const X509& certificate);
[[nodiscard]] QDateTime notAfterOf(const X509& certificate);
[[nodiscard]] QByteArray serialNumberOf(const X509& certificate);
[[nodiscard]] QByteArray derOf(const X509& certificate);

} // namespace quorin::platform
