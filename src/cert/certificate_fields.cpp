#include "cert/certificate_fields.h"

#include <QByteArray>

#include <algorithm>

namespace quorin {

bool isValidAt(const QDateTime& now, const platform::Certificate& certificate) {
    return !(now < certificate.notBefore() || certificate.notAfter() < now);
}

QString serialNumberText(const platform::Certificate& certificate) {
    QByteArray bytes = certificate.serialNumber();
    std::reverse(bytes.begin(), bytes.end());
    return QString::fromLatin1(bytes.toHex());
}

} // namespace quorin
