#include "support/store.h"

namespace quorin::test {

bool canMakeCertificates() {
    return false;
}

QByteArray installCertificate(const Site&, const QByteArray&) {
    return {};
}

} // namespace quorin::test
