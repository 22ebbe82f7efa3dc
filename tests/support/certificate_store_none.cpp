#include "support/certificate_store.h"

namespace quorin::test {

bool canInstallCertificates() {
    return false;
}

QByteArray installCertificate(const Site&, const QByteArray&) {
    return {};
}

IssuedCertificate installIssuedCertificate(const Site&, const QByteArray&, IntermediatePlace,
                                           const std::string&) {
    return {};
}

QString authorityFolder(const Site&) {
    return {};
}

} // namespace quorin::test
