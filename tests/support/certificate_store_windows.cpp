#include "support/certificate_store.h"

#include "certificates/test_certificate.h"
#include "platform/windows/system.h"

#include <wincrypt.h>

#include <QFile>

#include <gtest/gtest.h>

#include <memory>

namespace quorin::test {

namespace {

// A certificate in the store "My" of the machine. The destructor removes it.
class InstalledCertificate {
public:
    explicit InstalledCertificate(const QByteArray& der)
        : store_(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE,
                               L"My")) {
        EXPECT_NE(store_, nullptr) << GetLastError();
        EXPECT_NE(CertAddEncodedCertificateToStore(
                      store_, X509_ASN_ENCODING, reinterpret_cast<const BYTE*>(der.constData()),
                      static_cast<DWORD>(der.size()), CERT_STORE_ADD_NEW, &context_),
                  FALSE)
            << GetLastError();
        commit();
    }
    ~InstalledCertificate() {
        if (context_ != nullptr) {
            CertDeleteCertificateFromStore(context_); // frees it
            commit();
        }
        if (store_ != nullptr) {
            CertCloseStore(store_, 0);
        }
    }
    InstalledCertificate(const InstalledCertificate&) = delete;
    InstalledCertificate& operator=(const InstalledCertificate&) = delete;

private:
    // Makes changes visible to processes that open the store later.
    void commit() const {
        EXPECT_NE(CertControlStore(store_, 0, CERT_STORE_CTRL_COMMIT, nullptr), FALSE);
    }

    HCERTSTORE store_ = nullptr;
    PCCERT_CONTEXT context_ = nullptr;
};

} // namespace

// The key is not stored with the certificate: Wine cannot export it. The test host reads it from a
// file instead.
QByteArray installCertificate(Site& site, const QByteArray& name) {
    const TestKey key;
    const QByteArray certificate = selfSigned(key, fieldsForHost(name.toStdString()));
    QFile file(site.privateKeyPath());
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(key.pkcs8Der());
    site.keep(std::make_shared<InstalledCertificate>(derFromPem(certificate)));
    return certificate;
}

} // namespace quorin::test
