#include "platform/certificate_store.h"

#include "platform/windows/system.h"

#include <ncrypt.h>
#include <wincrypt.h>

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// Self-signed, CN=shown.example, DNS names gateway.example and Other.example, serial number
// 0x80ab0001, valid from 2020-01-02 03:04:05 to 2049-12-31 23:59:58 UTC, in DER.
const QByteArray kCertificate = QByteArray::fromBase64(
    "MIIBbzCCARWgAwIBAgIFAICrAAEwCgYIKoZIzj0EAwIwGDEWMBQGA1UEAwwNc2hvd24uZXhhbXBsZTAeFw0yMDAx"
    "MDIwMzA0MDVaFw00OTEyMzEyMzU5NThaMBgxFjAUBgNVBAMMDXNob3duLmV4YW1wbGUwWTATBgcqhkjOPQIBBggq"
    "hkjOPQMBBwNCAARYrQUWKQHx3wIxBQhld1eyZCE04UckMGQdDoxCc/f89m9Jd7uVvnCk9XeEsg9yBwWdI8mFbBjz"
    "YQQFjYt7AOyho0wwSjApBgNVHREEIjAggg9nYXRld2F5LmV4YW1wbGWCDU90aGVyLmV4YW1wbGUwHQYDVR0OBBYE"
    "FBxAg8IMKpqnOi8RvVo4cjPKD0QAMAoGCCqGSM49BAMCA0gAMEUCIQD5J0UXeDT6R9kScO6lCeybp5Sp+KYaWZwb"
    "TAb/BXc0igIgKkf51lXfl8IYAtw/FWHg64Aq7H6fTM6rRscaRkqFmgw=");

constexpr DWORD kEncoding = X509_ASN_ENCODING;

// Installs the certificate in a store of the local machine. The destructor removes it.
class InstalledCertificate {
public:
    explicit InstalledCertificate(const wchar_t* storeName)
        : store_(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE,
                               storeName)) {
        if (store_ != nullptr &&
            CertAddEncodedCertificateToStore(
                store_, kEncoding, reinterpret_cast<const BYTE*>(kCertificate.constData()),
                static_cast<DWORD>(kCertificate.size()), CERT_STORE_ADD_REPLACE_EXISTING,
                &context_) != FALSE) {
            commit();
        }
    }
    ~InstalledCertificate() {
        if (context_ != nullptr) {
            CertDeleteCertificateFromStore(context_);
            commit();
        }
        if (store_ != nullptr) {
            CertCloseStore(store_, 0);
        }
    }
    InstalledCertificate(const InstalledCertificate&) = delete;
    InstalledCertificate& operator=(const InstalledCertificate&) = delete;

    [[nodiscard]] PCCERT_CONTEXT context() const { return context_; }

    // Makes changes visible when the store is opened again.
    void commit() const { CertControlStore(store_, 0, CERT_STORE_CTRL_COMMIT, nullptr); }

private:
    HCERTSTORE store_ = nullptr;
    PCCERT_CONTEXT context_ = nullptr;
};

std::unique_ptr<Certificate> findInstalled(QStringView storeName) {
    const auto store = localMachineCertificates().openStore(storeName);
    if (!store) {
        return nullptr;
    }
    while (auto certificate = store->next()) {
        if (certificate->der() == kCertificate) {
            return certificate;
        }
    }
    EXPECT_EQ(store->next(), nullptr) << "the enumeration must not restart";
    return nullptr;
}

class CertificateStoreTest : public testing::TestWithParam<const wchar_t*> {
protected:
    void SetUp() override {
        if (installed_.context() == nullptr) {
            GTEST_SKIP() << "this account has no write access to the certificate stores of the "
                            "local machine";
        }
    }

    const QString storeName_ = QString::fromWCharArray(GetParam());
    const InstalledCertificate installed_{GetParam()};
};

TEST_P(CertificateStoreTest, CertificateOutlivesStore) {
    const auto certificate = findInstalled(storeName_);
    ASSERT_NE(certificate, nullptr);
    EXPECT_EQ(certificate->dnsNames(),
              (std::vector<std::string>{"gateway.example", "Other.example"}));
    EXPECT_EQ(certificate->displayName(), "shown.example");
    EXPECT_EQ(certificate->notBefore(), QDateTime(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC));
    EXPECT_EQ(certificate->notAfter(), QDateTime(QDate(2049, 12, 31), QTime(23, 59, 58), Qt::UTC));
    EXPECT_EQ(certificate->serialNumber().toHex().toStdString(), "0100ab80");
}

TEST_P(CertificateStoreTest, CertificateWithoutKeyHasNoHandle) {
    const auto certificate = findInstalled(storeName_);
    ASSERT_NE(certificate, nullptr);
    EXPECT_EQ(certificate->acquirePrivateKey(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Stores, CertificateStoreTest, testing::Values(L"WebHosting", L"My"),
                         [](const auto& store) {
                             return QString::fromWCharArray(store.param).toStdString();
                         });

// An RSA key in CNG key storage, named after this process. The destructor deletes it.
class StoredKey {
public:
    StoredKey() {
        if (NCryptOpenStorageProvider(&provider_, MS_KEY_STORAGE_PROVIDER, 0) != ERROR_SUCCESS ||
            NCryptCreatePersistedKey(provider_, &key_, BCRYPT_RSA_ALGORITHM, wide(name_), 0,
                                     NCRYPT_MACHINE_KEY_FLAG) != ERROR_SUCCESS) {
            return;
        }
        DWORD length = 2048;
        DWORD policy = NCRYPT_ALLOW_EXPORT_FLAG | NCRYPT_ALLOW_PLAINTEXT_EXPORT_FLAG;
        stored_ = set(NCRYPT_LENGTH_PROPERTY, length) &&
                  set(NCRYPT_EXPORT_POLICY_PROPERTY, policy) &&
                  NCryptFinalizeKey(key_, 0) == ERROR_SUCCESS;
    }
    ~StoredKey() {
        if (stored_) {
            NCryptDeleteKey(key_, 0);
        } else if (key_ != 0) {
            NCryptFreeObject(key_);
        }
        if (provider_ != 0) {
            NCryptFreeObject(provider_);
        }
    }
    StoredKey(const StoredKey&) = delete;
    StoredKey& operator=(const StoredKey&) = delete;

    [[nodiscard]] bool assignTo(PCCERT_CONTEXT certificate) const {
        std::wstring provider = MS_KEY_STORAGE_PROVIDER;
        std::wstring name = name_.toStdWString();
        CRYPT_KEY_PROV_INFO info{};
        info.pwszContainerName = name.data();
        info.pwszProvName = provider.data();
        info.dwFlags = CRYPT_MACHINE_KEYSET;
        return stored_ && CertSetCertificateContextProperty(certificate, CERT_KEY_PROV_INFO_PROP_ID,
                                                            0, &info) != FALSE;
    }

private:
    bool set(const wchar_t* property, DWORD value) {
        return NCryptSetProperty(key_, property, reinterpret_cast<BYTE*>(&value), sizeof(value),
                                 0) == ERROR_SUCCESS;
    }

    const QString name_ = u"quorin-test-%1"_s.arg(QCoreApplication::applicationPid());
    NCRYPT_PROV_HANDLE provider_ = 0;
    NCRYPT_KEY_HANDLE key_ = 0;
    bool stored_ = false;
};

TEST(SystemKeyTest, ExportsStoredKeyAsPkcs8) {
    const InstalledCertificate installed(L"My");
    if (installed.context() == nullptr) {
        GTEST_SKIP()
            << "this account has no write access to the certificate stores of the local machine";
    }
    const StoredKey stored;
    if (!stored.assignTo(installed.context())) {
        GTEST_SKIP() << "this system cannot store a key for a certificate";
    }
    installed.commit();
    const auto certificate = findInstalled(u"My");
    ASSERT_NE(certificate, nullptr);
    const auto key = certificate->acquirePrivateKey();
    if (!key) {
        GTEST_SKIP() << "this system does not return the stored key of a certificate";
    }
    const auto group = key->algorithmGroup();
    EXPECT_EQ(group.outcome, Outcome::Complete);
    EXPECT_EQ(group.value, u"RSA"_s);
    const SecretBytes bytes = key->exportPkcs8();
    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(bytes.view().front(), '\x30') << "not a DER structure";
}

TEST(CertificateSystemTest, Base64LinesHave64CharactersAndCrLf) {
    const auto text = localMachineCertificates().toBase64(QByteArray(51, 'a'));
    EXPECT_EQ(text.outcome, Outcome::Complete);
    EXPECT_EQ(text.value.view().toByteArray().toStdString(),
              QByteArray("YWFh").repeated(16).toStdString() + "\r\nYWFh\r\n");
}

TEST(CertificateSystemTest, CurrentTimeIsInUtc) {
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QDateTime now = localMachineCertificates().currentTime();
    const QDateTime after = QDateTime::currentDateTimeUtc();
    EXPECT_EQ(now.timeSpec(), Qt::UTC);
    EXPECT_LE(before, now.addMSecs(20)); // the clocks have different resolutions
    EXPECT_LE(now, after.addMSecs(20));
}

TEST(CertificateSystemTest, UnknownStoreIsEmpty) {
    const auto store = localMachineCertificates().openStore(u"QuorinUnknownStore");
    EXPECT_TRUE(!store || store->next() == nullptr);
}

} // namespace
} // namespace quorin::platform
