#include "cert/private_key.h"

#include "cert/certificate_fields.h"
#include "log/log.h"

#include <QString>
#include <QStringView>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin {

namespace {

struct AlgorithmGroup {
    QStringView name;
    QSsl::KeyAlgorithm algorithm;
};

constexpr std::array<AlgorithmGroup, 5> kAlgorithmGroups{{
    {u"RSA", QSsl::Rsa},
    {u"DH", QSsl::Dh},
    {u"DSA", QSsl::Dsa},
    {u"ECDH", QSsl::Ec},
    {u"ECDSA", QSsl::Ec},
}};

QSsl::KeyAlgorithm algorithmFromGroup(const QString& name) {
    const auto found =
        std::find_if(kAlgorithmGroups.begin(), kAlgorithmGroups.end(),
                     [&name](const AlgorithmGroup& group) { return group.name == name; });
    return found != kAlgorithmGroups.end() ? found->algorithm : QSsl::Opaque;
}

} // namespace

ExportedKey exportPrivateKey(const platform::Certificate& certificate) {
    ExportedKey key;
    const auto handle = certificate.acquirePrivateKey();
    if (!handle.value) {
        log::warn(u"Failed to get crypt provider handle."_s);
        key.error = handle.error;
        return key;
    }
    key.hasHandle = true;
    auto exported = handle.value->exportPkcs8();
    key.keyBytes = std::move(exported.value);
    if (key.ok()) {
        key.algorithm = keyAlgorithm(*handle.value);
    } else {
        log::warn(u"Failed to export private key."_s);
        key.error = exported.error;
    }
    return key;
}

ExportedKey exportEncryptedPrivateKey(const platform::Certificate& certificate) {
    ExportedKey key;
    const auto handle = certificate.acquirePrivateKey();
    if (!handle.value) {
        key.error = handle.error;
        return key;
    }
    key.hasHandle = true;
    auto exported = handle.value->exportEncryptedPkcs8();
    key.keyBytes = std::move(exported.value.pkcs8);
    key.passPhrase = std::move(exported.value.passPhrase);
    if (key.ok()) {
        log::info(u"Exported private key in encrypted form (Serial Number - " +
                  serialNumberText(certificate) + u')');
        key.algorithm = keyAlgorithm(*handle.value);
    } else {
        key.error = exported.error;
    }
    return key;
}

QSsl::KeyAlgorithm keyAlgorithm(const platform::KeyHandle& key) {
    const auto group = key.algorithmGroup();
    switch (group.outcome) {
    case platform::Outcome::NoSize:
        log::error(u"Failed to get property size. Set key Algorithm to OPAQUE"_s);
        return QSsl::Opaque;
    case platform::Outcome::NoData:
        log::error(u"Failed to get property data. Set key Algorithm to OPAQUE"_s);
        return QSsl::Opaque;
    case platform::Outcome::Complete:
        break;
    }
    log::info(u"Key Algorithm is " + group.value + u'.');
    return algorithmFromGroup(group.value);
}

} // namespace quorin
