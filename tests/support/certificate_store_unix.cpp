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

} // namespace

void addCertificate(Site& site, const QByteArray& certificate, const TestKey& key,
                    const QByteArray& others) {
    write(site.appDataPath(u"Vemo/Quorin5/certificates/WebHosting"_s), u"gateway.pem"_s,
          certificate + key.pkcs8Pem() + others);
}

void addAuthority(Site& site, const QByteArray& certificate) {
    write(authorityFolder(site), hashedFileName(certificate), certificate);
}

QString authorityFolder(const Site& site) {
    return site.appDataPath(u"../authorities"_s);
}

} // namespace quorin::test
