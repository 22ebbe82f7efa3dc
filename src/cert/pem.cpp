#include "cert/pem.h"

#include "log/log.h"

#include <QLatin1StringView>
#include <QString>

namespace quorin {

namespace {

// Returns an empty text for an undefined type.
QLatin1StringView pemLabel(PemType type) {
    switch (type) {
    case PemType::Certificate:
        return QLatin1StringView("CERTIFICATE");
    case PemType::PrivateKey:
        return QLatin1StringView("PRIVATE KEY");
    }
    return {};
}

} // namespace

platform::SecretBytes toPem(QByteArrayView bytes, PemType type,
                            const platform::CertificateSystem& system) {
    const QLatin1StringView label = pemLabel(type);
    if (label.isEmpty()) {
        return {};
    }
    const auto base64 = system.toBase64(bytes);
    switch (base64.outcome) {
    case platform::Outcome::NoSize:
        log::error(u"Failed to get base64 string size for " + label + u'.');
        return {};
    case platform::Outcome::NoData:
        log::error(u"Failed to get base64 string data for " + label + u'.');
        return {};
    case platform::Outcome::Complete:
        break;
    }
    const QByteArrayView labelBytes(label.data(), label.size());
    return platform::SecretBytes::joined({"-----BEGIN ", labelBytes, "-----\n", base64.value.view(),
                                          "-----END ", labelBytes, "-----\n"});
}

} // namespace quorin
