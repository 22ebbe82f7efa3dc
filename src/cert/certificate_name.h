#pragma once

#include <QByteArray>
#include <QString>

namespace quorin {

// The name under which clients reach this gateway and which its certificate must therefore carry,
// in UTF-8. For the organisation of the cloud itself it is the host of `rootUrl`; for all others
// `gatewayAddress`, unless that is a loopback address. What names no host stands for this machine.
[[nodiscard]] QByteArray chooseCertificateName(const QString& organizationId,
                                               const QString& rootUrl,
                                               const QString& gatewayAddress);

} // namespace quorin
