#include "support/certificate_store.h"

namespace quorin::test {

bool canInstallCertificates() {
    return false;
}

QByteArray installCertificate(const Site&, const QByteArray&) {
    return {};
}

} // namespace quorin::test
