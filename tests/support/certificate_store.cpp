#include "support/certificate_store.h"

#include "certificates/test_certificate.h"

namespace quorin::test {

QByteArray installCertificate(Site& site, const QByteArray& name) {
    const TestKey key;
    QByteArray certificate = selfSigned(key, fieldsForHost(name.toStdString()));
    addCertificate(site, certificate, key);
    return certificate;
}

IssuedCertificate installIssuedCertificate(Site& site, const QByteArray& name,
                                           IntermediatePlace place, const std::string& digest) {
    const TestKey key;
    const TestAuthority root("root");
    const TestAuthority intermediate("intermediate", root, digest);
    IssuedCertificate issued{intermediate.issue(key, fieldsForHost(name.toStdString())),
                             intermediate.certificate(), root.certificate()};
    QByteArray others;
    if (place == IntermediatePlace::CertificateFile) {
        others = issued.root + issued.intermediate;
    }
    addCertificate(site, issued.certificate, key, others);
    if (place == IntermediatePlace::Authorities) {
        addAuthority(site, issued.root);
        addAuthority(site, issued.intermediate);
    }
    return issued;
}

} // namespace quorin::test
