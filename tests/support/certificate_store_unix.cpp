#include "support/certificate_store.h"

#include "certificates/test_certificate.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

bool canInstallCertificates() {
    return true;
}

QByteArray installCertificate(const Site& site, const QByteArray& name) {
    const TestKey key;
    CertificateFields fields;
    fields.subject = {{"CN", name.toStdString()}};
    fields.alternativeNames = "DNS:" + name.toStdString();
    const QByteArray certificate = selfSigned(key, fields);
    const QString folder = site.appDataPath(u"Vemo/Quorin5/certificates/WebHosting"_s);
    EXPECT_TRUE(QDir().mkpath(folder));
    QFile file(folder + u"/gateway.pem");
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    file.write(certificate + key.pkcs8Pem());
    return certificate;
}

} // namespace quorin::test
