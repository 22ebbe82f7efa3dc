#include "support/certificate_store.h"

#include "certificates/test_certificate.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

void write(const QString& folder, const QString& name, const QByteArray& text) {
    EXPECT_TRUE(QDir().mkpath(folder));
    QFile file(folder + u'/' + name);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    file.write(text);
}

// Writes the file of the certificate.
void install(const Site& site, const QByteArray& text) {
    write(site.appDataPath(u"Vemo/Quorin5/certificates/WebHosting"_s), u"gateway.pem"_s, text);
}

} // namespace

QByteArray installCertificate(Site& site, const QByteArray& name) {
    const TestKey key;
    const QByteArray certificate = selfSigned(key, fieldsForHost(name.toStdString()));
    install(site, certificate + key.pkcs8Pem());
    return certificate;
}

IssuedCertificate installIssuedCertificate(Site& site, const QByteArray& name,
                                           IntermediatePlace place, const std::string& digest) {
    const TestKey key;
    const TestAuthority root("root");
    const TestAuthority intermediate("intermediate", root, digest);
    const IssuedCertificate issued{intermediate.issue(key, fieldsForHost(name.toStdString())),
                                   intermediate.certificate(), root.certificate()};
    QByteArray text = issued.certificate + key.pkcs8Pem();
    if (place == IntermediatePlace::CertificateFile) {
        text += issued.root + issued.intermediate;
    }
    install(site, text);
    if (place == IntermediatePlace::Authorities) {
        for (const QByteArray& certificate : {issued.root, issued.intermediate}) {
            write(authorityFolder(site), hashedFileName(certificate), certificate);
        }
    }
    return issued;
}

QString authorityFolder(const Site& site) {
    return site.appDataPath(u"../authorities"_s);
}

} // namespace quorin::test
