#pragma once

#include "support/site.h"

namespace quorin::test {

// Returns true if the tests can add certificates to a site's certificate store on this system.
[[nodiscard]] bool canInstallCertificates();

// Adds a new self-signed certificate for the host `name`, with its key, to the site's store
// "WebHosting". Returns the certificate in PEM.
QByteArray installCertificate(const Site& site, const QByteArray& name);

} // namespace quorin::test
