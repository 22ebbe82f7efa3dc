#pragma once

#include "support/site.h"

#include <string>

namespace quorin::test {

class TestKey;

// Adds a new self-signed certificate for the host `name`, with its key, to a certificate store of
// the site: "WebHosting" on Linux, the machine's "My" on Windows, until the site is destroyed.
// Returns the certificate in PEM. Adds a test failure if the store cannot be written.
QByteArray installCertificate(Site& site, const QByteArray& name);

// The same for a given certificate in PEM and its key. Linux also writes `others` into the file of
// the certificate.
void addCertificate(Site& site, const QByteArray& certificate, const TestKey& key,
                    const QByteArray& others = {});

// Adds the certificate of an authority, in PEM, to `authorityFolder(site)` or, on Windows, to the
// machine's store "CA" until the site is destroyed.
void addAuthority(Site& site, const QByteArray& certificate);

// Where the certificate of the intermediate authority is installed.
enum class IntermediatePlace { Nowhere, CertificateFile, Authorities };

// A certificate that an intermediate authority has issued, with the certificates of its chain, all
// in PEM.
struct IssuedCertificate {
    QByteArray certificate;
    QByteArray intermediate;
    QByteArray root;
};

// Adds such a certificate for the host `name`, with its key, as installCertificate() does.
// IntermediatePlace::CertificateFile adds the certificates of both authorities to the file of the
// certificate (Linux only). IntermediatePlace::Authorities puts them into `authorityFolder(site)`,
// which a gateway on Linux uses if its environment variable SSL_CERT_DIR names it, or into the
// machine's store "CA" on Windows. The intermediate authority's certificate is signed with
// `digest`.
IssuedCertificate installIssuedCertificate(Site& site, const QByteArray& name,
                                           IntermediatePlace place,
                                           const std::string& digest = "SHA256");
[[nodiscard]] QString authorityFolder(const Site& site);

} // namespace quorin::test
