#pragma once

#include "support/site.h"

namespace quorin::test {

// True where tests can put certificates into the machine's store for a site.
[[nodiscard]] bool canMakeCertificates();

// Puts a new certificate for the host `name`, signed by itself, and its key into the site's store
// "WebHosting". Returns it in PEM.
QByteArray installCertificate(const Site& site, const QByteArray& name);

} // namespace quorin::test
