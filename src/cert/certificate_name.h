#pragma once

#include <QByteArray>
#include <QString>

namespace quorin {

// Returns the name, in UTF-8, that the server certificate must contain. This is the name under
// which clients reach the gateway: for the cloud organisation the host in `rootUrl`, for any other
// organisation `gatewayAddress`. If `rootUrl` does not have the expected form or `gatewayAddress`
// is a loopback address, returns the name of the local machine, including its domain if it has one.
[[nodiscard]] QByteArray chooseCertificateName(const QString& organizationId,
                                               const QString& rootUrl,
                                               const QString& gatewayAddress);

} // namespace quorin
