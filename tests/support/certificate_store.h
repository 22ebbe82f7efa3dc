#pragma once

#include "support/site.h"

#include <string>

namespace quorin::test {

// Returns true if the tests can add certificates to a site's certificate store on this system.
[[nodiscard]] bool canInstallCertificates();

// Adds a new self-signed certificate for the host `name`, with its key, to the site's store
// "WebHosting". Returns the certificate in PEM.
QByteArray installCertificate(const Site& site, const QByteArray& name);

// Where the certificate of the intermediate authority is installed.
enum class IntermediatePlace { Nowhere, CertificateFile, AuthorityFolder };

// A certificate that an intermediate authority has issued, with the certificates of its chain, all
// in PEM.
struct IssuedCertificate {
    QByteArray certificate;
    QByteArray intermediate;
    QByteArray root;
};

// Adds such a certificate for the host `name`, with its key, to the site's store "WebHosting".
// IntermediatePlace::CertificateFile adds the certificates of both authorities to the file of the
// certificate. IntermediatePlace::AuthorityFolder puts them into `authorityFolder(site)`, which the
// gateway uses if its environment variable SSL_CERT_DIR names it. The intermediate authority's
// certificate is signed with `digest`.
IssuedCertificate installIssuedCertificate(const Site& site, const QByteArray& name,
                                           IntermediatePlace place,
                                           const std::string& digest = "SHA256");
[[nodiscard]] QString authorityFolder(const Site& site);

} // namespace quorin::test
