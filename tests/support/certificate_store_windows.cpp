#include "support/certificate_store.h"

#include "certificates/test_certificate.h"
#include "platform/windows/system.h"

#include <wincrypt.h>

#include <QFile>

#include <gtest/gtest.h>

#include <memory>

namespace quorin::test {

namespace {

// A certificate in a store of the machine. The destructor removes it.
class InstalledCertificate {
public:
    InstalledCertificate(const wchar_t* store, const QByteArray& der)
        : store_(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE,
                               store)) {
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

void install(Site& site, const wchar_t* store, const QByteArray& certificate) {
    site.keep(std::make_shared<InstalledCertificate>(store, derFromPem(certificate)));
}

} // namespace

// The key is not stored with the certificate: Wine cannot export it. The test host reads it from a
// file instead.
void addCertificate(Site& site, const QByteArray& certificate, const TestKey& key,
                    const QByteArray& /*others*/) {
    QFile file(site.privateKeyPath());
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(key.pkcs8Der());
    install(site, L"My", certificate);
}

void addAuthority(Site& site, const QByteArray& certificate) {
    install(site, L"CA", certificate);
}

QString authorityFolder(const Site& /*site*/) {
    return {};
}

} // namespace quorin::test
