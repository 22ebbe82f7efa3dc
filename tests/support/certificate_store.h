#pragma once

#include "support/site.h"

namespace quorin::test {

// Adds a new self-signed certificate for the host `name`, with its key, to a certificate store of
// the site: "WebHosting" on Linux, the machine's "My" on Windows, until the site is destroyed.
// Returns the certificate in PEM. Adds a test failure if the store cannot be written.
QByteArray installCertificate(Site& site, const QByteArray& name);

} // namespace quorin::test
