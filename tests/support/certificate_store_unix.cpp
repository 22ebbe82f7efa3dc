#include "support/certificate_store.h"

#include "certificates/test_certificate.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

QByteArray installCertificate(Site& site, const QByteArray& name) {
    const TestKey key;
    const QByteArray certificate = selfSigned(key, fieldsForHost(name.toStdString()));
    const QString folder = site.appDataPath(u"Vemo/Quorin5/certificates/WebHosting"_s);
    EXPECT_TRUE(QDir().mkpath(folder));
    QFile file(folder + u"/gateway.pem");
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_TRUE(file.setPermissions(QFile::ReadOwner | QFile::WriteOwner));
    file.write(certificate + key.pkcs8Pem());
    return certificate;
}

} // namespace quorin::test
