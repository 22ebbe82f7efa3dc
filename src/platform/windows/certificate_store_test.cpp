#include "platform/certificate_store.h"

#include "platform/windows/system.h"

#include <ncrypt.h>
#include <wincrypt.h>

#include <QCoreApplication>
#include <QSslKey>

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <vector>

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

// A chain of EC certificates. "Quorin test root" has issued kIntermediate and kNamesake, whose
// subject is the same, and kWeakIntermediate, with SHA-1. The first of them has issued kLeaf.
const QByteArray kRoot = QByteArray::fromBase64(
    "MIIBijCCATCgAwIBAgIBATAKBggqhkjOPQQDAjAbMRkwFwYDVQQDDBBRdW9yaW4gdGVzdCByb290MCAXDTI2MTEy"
    "MjA4MTUwNFoYDzIxMjYxMDI5MDgxNTA0WjAbMRkwFwYDVQQDDBBRdW9yaW4gdGVzdCByb290MFkwEwYHKoZIzj0C"
    "AQYIKoZIzj0DAQcDQgAE5BkAGLEx0O5OZ2Y8cjzDy8BmCpJ4Ry9H7dSZT6jWSFP9v2LgA3FVKGC1jmYDLQOz95/b"
    "iJC7/plo9sIrWOaQrKNjMGEwHQYDVR0OBBYEFJwFdJjzVXiz5DHIbWsTk7sKiR2XMB8GA1UdIwQYMBaAFJwFdJjz"
    "VXiz5DHIbWsTk7sKiR2XMA8GA1UdEwEB/wQFMAMBAf8wDgYDVR0PAQH/BAQDAgIEMAoGCCqGSM49BAMCA0gAMEUC"
    "IQD+yHy2DqwaCq+f2aPLkzaohTiMC5ao5ukdBE6joY3dXQIgcH3w3Hg/H2PfwnJVNRPc4Tqc59b3HO711LFAV6Kt"
    "/m4=");
const QByteArray kIntermediate = QByteArray::fromBase64(
    "MIIBkjCCATigAwIBAgIBAjAKBggqhkjOPQQDAjAbMRkwFwYDVQQDDBBRdW9yaW4gdGVzdCByb290MCAXDTI2MTEy"
    "MjA4MTUwNFoYDzIxMjYxMDI5MDgxNTA0WjAjMSEwHwYDVQQDDBhRdW9yaW4gdGVzdCBpbnRlcm1lZGlhdGUwWTAT"
    "BgcqhkjOPQIBBggqhkjOPQMBBwNCAASY05BiYxp2KwbiSXFBpsU1QCSBmARIom4g1WAM5tV+yZHhdtmP1sWrMwz3"
    "mhmjmjRvx8ZnMfnMkvj64UWv+sG+o2MwYTAPBgNVHRMBAf8EBTADAQH/MA4GA1UdDwEB/wQEAwICBDAdBgNVHQ4E"
    "FgQU33j5yyU8px3vKKwz7zrzw3psEOswHwYDVR0jBBgwFoAUnAV0mPNVeLPkMchtaxOTuwqJHZcwCgYIKoZIzj0E"
    "AwIDSAAwRQIhAKjUwKlj0YvRiu4jlvc7AwMVo8AJcZCWLcz7hLr983v8AiBfd0zAK+6aLdsBALud0QACfzjdLBM9"
    "kzwBvvFdwGQXEQ==");
const QByteArray kNamesake = QByteArray::fromBase64(
    "MIIBkjCCATigAwIBAgIBAzAKBggqhkjOPQQDAjAbMRkwFwYDVQQDDBBRdW9yaW4gdGVzdCByb290MCAXDTI2MTEy"
    "MjA4MTUwNFoYDzIxMjYxMDI5MDgxNTA0WjAjMSEwHwYDVQQDDBhRdW9yaW4gdGVzdCBpbnRlcm1lZGlhdGUwWTAT"
    "BgcqhkjOPQIBBggqhkjOPQMBBwNCAASx6m9w2HhhLS1VhNTPdeeb2oE7d5TMIVxTF6fQteEUXsBxrYJQcB6vqKa2"
    "/Fuj1PegrDyZuM+1I06Fq7ZCF05Co2MwYTAPBgNVHRMBAf8EBTADAQH/MA4GA1UdDwEB/wQEAwICBDAdBgNVHQ4E"
    "FgQUJ2CdbtWOvB7NX3MRIj6C0dslvSEwHwYDVR0jBBgwFoAUnAV0mPNVeLPkMchtaxOTuwqJHZcwCgYIKoZIzj0E"
    "AwIDSAAwRQIhAOmn26jBqX5qeEA+Z2Ch4Ajl5slM3xAMOFDfZdCo8OCTAiBzTZ8wZS9+GbYE82J8tdwq+sspIdKF"
    "oDApfO4vkIQrmw==");
const QByteArray kWeakIntermediate = QByteArray::fromBase64(
    "MIIBkDCCATegAwIBAgIBBTAJBgcqhkjOPQQBMBsxGTAXBgNVBAMMEFF1b3JpbiB0ZXN0IHJvb3QwIBcNMjYxMTIy"
    "MDgxNTA1WhgPMjEyNjEwMjkwODE1MDVaMCMxITAfBgNVBAMMGFF1b3JpbiB0ZXN0IGludGVybWVkaWF0ZTBZMBMG"
    "ByqGSM49AgEGCCqGSM49AwEHA0IABJjTkGJjGnYrBuJJcUGmxTVAJIGYBEiibiDVYAzm1X7JkeF22Y/WxaszDPea"
    "GaOaNG/Hxmcx+cyS+PrhRa/6wb6jYzBhMA8GA1UdEwEB/wQFMAMBAf8wDgYDVR0PAQH/BAQDAgIEMB0GA1UdDgQW"
    "BBTfePnLJTynHe8orDPvOvPDemwQ6zAfBgNVHSMEGDAWgBScBXSY81V4s+QxyG1rE5O7CokdlzAJBgcqhkjOPQQB"
    "A0gAMEUCIQCEfK4k1CFCda5OQQUTplC+Ponsd+Xd3mV/nHdAP9BdgQIgOeEuHFoiI5RxIq6F6kfFClJKGU5qOJvd"
    "kffHOZ9OnGQ=");
const QByteArray kLeaf = QByteArray::fromBase64(
    "MIIBjTCCATKgAwIBAgIBBDAKBggqhkjOPQQDAjAjMSEwHwYDVQQDDBhRdW9yaW4gdGVzdCBpbnRlcm1lZGlhdGUw"
    "IBcNMjYxMTIyMDgxNTA0WhgPMjEyNjEwMjkwODE1MDRaMBoxGDAWBgNVBAMMD2dhdGV3YXkuZXhhbXBsZTBZMBMG"
    "ByqGSM49AgEGCCqGSM49AwEHA0IABO/wGji0z9+Lxagwim48ckKR3MuQcjxaIeOFX8K4egE3pS6t+ojNAyi3FBWv"
    "PX7ZFRDYTS/dNLPN0Hrl2AJAZgmjXjBcMBoGA1UdEQQTMBGCD2dhdGV3YXkuZXhhbXBsZTAdBgNVHQ4EFgQUToIB"
    "XFowoNCO+XWZ7h80Ui7Q5LswHwYDVR0jBBgwFoAU33j5yyU8px3vKKwz7zrzw3psEOswCgYIKoZIzj0EAwIDSQAw"
    "RgIhANwAsErfgQ2SmrD1ZK0ySoZnUFWOl/0n7KdJUzH0DjIVAiEAwBNi8HR/jljm/htMh6q9aPZyOg4ub7kql6US"
    "VTLnrUk=");
// Self-signed, RSA with 1024 bits and SHA-256.
const QByteArray kWeakKey = QByteArray::fromBase64(
    "MIIB8TCCAVqgAwIBAgIBBjANBgkqhkiG9w0BAQsFADATMREwDwYDVQQDDAh3ZWFrIGtleTAgFw0yNjExMjIwODE1"
    "MDVaGA8yMTI2MTAyOTA4MTUwNVowEzERMA8GA1UEAwwId2VhayBrZXkwgZ8wDQYJKoZIhvcNAQEBBQADgY0AMIGJ"
    "AoGBANeFCNUh2oMtqdPFfWGrRnGwv/Mqb9YAKpVp5SQSaCqvDT/QF3UqJVzk/9MHmv2bp7zoExMqraCcpq+J8e4u"
    "OppJVHYVCg+hsNhJq2WB4YXglg8xlVwpediNuwLlPAM7q1yNnG6VQTuTg3dSlh5wcqRQXFMzLkoVc4CRmsMiTTcz"
    "AgMBAAGjUzBRMB0GA1UdDgQWBBR8jbjipOljpTrCvw4TlNe+oRoD+TAfBgNVHSMEGDAWgBR8jbjipOljpTrCvw4T"
    "lNe+oRoD+TAPBgNVHRMBAf8EBTADAQH/MA0GCSqGSIb3DQEBCwUAA4GBAJhXn9N9wWuj7BjQYN/SBP1HU4U1kY3P"
    "iH+KMEkGrBFZwoOsK0Bmvc8LwVc7wwj+b8Byz4itQ2K7/LBEoqoa41Omy7q7q0j/W3Km8eFJSY4Fjb0ImA5Cqzhw"
    "maNd03onRBWfta+zaZtHduzfS6PCyCVims2oRR3u+tYpKEN9ohDn");

constexpr DWORD kEncoding = X509_ASN_ENCODING;

// Installs the certificate in a store of the local machine. The destructor removes it.
class InstalledCertificate {
public:
    explicit InstalledCertificate(const wchar_t* storeName,
                                  const QByteArray& certificate = kCertificate)
        : store_(CertOpenStore(CERT_STORE_PROV_SYSTEM_W, 0, 0, CERT_SYSTEM_STORE_LOCAL_MACHINE,
                               storeName)) {
        if (store_ != nullptr &&
            CertAddEncodedCertificateToStore(store_, kEncoding,
                                             reinterpret_cast<const BYTE*>(certificate.constData()),
                                             static_cast<DWORD>(certificate.size()),
                                             CERT_STORE_ADD_REPLACE_EXISTING, &context_) != FALSE) {
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

std::unique_ptr<Certificate> findInstalled(QStringView storeName,
                                           const QByteArray& der = kCertificate) {
    const auto store = localMachineCertificates().openStore(storeName).value;
    if (!store) {
        return nullptr;
    }
    while (auto certificate = store->next()) {
        if (certificate->der() == der) {
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
    const auto key = certificate->acquirePrivateKey();
    EXPECT_EQ(key.value, nullptr);
    EXPECT_TRUE(key.error);
    EXPECT_FALSE(key.error.message().isEmpty());
}

INSTANTIATE_TEST_SUITE_P(Stores, CertificateStoreTest, testing::Values(L"WebHosting", L"My"),
                         [](const auto& store) {
                             return QString::fromWCharArray(store.param).toStdString();
                         });

// Returns the issuers that the system finds for a certificate while `intermediates` are installed
// in the store of intermediate authorities, or nothing if this account cannot install them.
std::optional<std::vector<QByteArray>> issuersOf(const QByteArray& certificate,
                                                 const std::vector<QByteArray>& intermediates) {
    std::deque<InstalledCertificate> installed;
    for (const QByteArray& intermediate : intermediates) {
        if (installed.emplace_back(L"CA", intermediate).context() == nullptr) {
            return std::nullopt;
        }
    }
    const InstalledCertificate leaf(L"My", certificate);
    if (leaf.context() == nullptr) {
        return std::nullopt;
    }
    const auto found = findInstalled(u"My", certificate);
    EXPECT_NE(found, nullptr);
    std::vector<QByteArray> issuers;
    for (const auto& issuer : found->issuers()) {
        issuers.push_back(issuer->der().toByteArray());
    }
    return issuers;
}

class IssuersTest : public testing::Test {
protected:
    void SetUp() override {
        if (!issuersOf(kLeaf, {kRoot})) {
            GTEST_SKIP() << "this account has no write access to the certificate stores of the "
                            "local machine";
        }
    }
};

TEST_F(IssuersTest, AreFoundAmongIntermediateAuthorities) {
    EXPECT_EQ(issuersOf(kLeaf, {}), std::vector<QByteArray>());
    EXPECT_EQ(issuersOf(kLeaf, {kRoot, kIntermediate}), std::vector{kIntermediate});
    EXPECT_EQ(issuersOf(kIntermediate, {kRoot, kIntermediate}), std::vector{kRoot});
}

TEST_F(IssuersTest, HaveSignedTheCertificate) {
    EXPECT_EQ(issuersOf(kLeaf, {kNamesake, kIntermediate}), std::vector{kIntermediate});
    EXPECT_EQ(issuersOf(kLeaf, {kNamesake}), std::vector<QByteArray>());
}

TEST_F(IssuersTest, SelfSignedCertificateHasNone) {
    EXPECT_EQ(issuersOf(kRoot, {kRoot, kIntermediate}), std::vector<QByteArray>());
}

TEST_F(IssuersTest, ReportPropertiesOfCertificate) {
    const InstalledCertificate root(L"CA", kRoot);
    const InstalledCertificate intermediate(L"CA", kIntermediate);
    const InstalledCertificate weakSignature(L"CA", kWeakIntermediate);
    const InstalledCertificate weakKey(L"CA", kWeakKey);
    EXPECT_TRUE(findInstalled(u"CA", kRoot)->isSelfSigned());
    EXPECT_FALSE(findInstalled(u"CA", kIntermediate)->isSelfSigned());
    EXPECT_FALSE(findInstalled(u"CA", kRoot)->isWeak());
    EXPECT_FALSE(findInstalled(u"CA", kIntermediate)->isWeak());
    EXPECT_TRUE(findInstalled(u"CA", kWeakIntermediate)->isWeak());
    EXPECT_TRUE(findInstalled(u"CA", kWeakKey)->isWeak());
}

// An RSA key in CNG key storage, named after this process. The destructor deletes it.
class StoredKey {
public:
    explicit StoredKey(DWORD policy) {
        if (NCryptOpenStorageProvider(&provider_, MS_KEY_STORAGE_PROVIDER, 0) != ERROR_SUCCESS ||
            NCryptCreatePersistedKey(provider_, &key_, BCRYPT_RSA_ALGORITHM, wide(name_), 0,
                                     NCRYPT_MACHINE_KEY_FLAG) != ERROR_SUCCESS) {
            return;
        }
        DWORD length = 2048;
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

// A certificate in the store "My" with a key whose export policy is the parameter of setUpKey().
class SystemKeyTest : public testing::Test {
protected:
    void setUpKey(DWORD policy) {
        if (installed_.context() == nullptr) {
            GTEST_SKIP() << "this account has no write access to the certificate stores of the "
                            "local machine";
        }
        stored_.emplace(policy);
        if (!stored_->assignTo(installed_.context())) {
            GTEST_SKIP() << "this system cannot store a key for a certificate";
        }
        installed_.commit();
        certificate_ = findInstalled(u"My");
        ASSERT_NE(certificate_, nullptr);
        key_ = certificate_->acquirePrivateKey().value;
        if (!key_) {
            GTEST_SKIP() << "this system does not return the stored key of a certificate";
        }
    }

    const InstalledCertificate installed_{L"My"};
    std::optional<StoredKey> stored_;
    std::unique_ptr<Certificate> certificate_;
    std::unique_ptr<KeyHandle> key_; // must not outlive certificate_
};

TEST_F(SystemKeyTest, ExportsStoredKeyAsPkcs8) {
    setUpKey(NCRYPT_ALLOW_EXPORT_FLAG | NCRYPT_ALLOW_PLAINTEXT_EXPORT_FLAG);
    if (!key_) {
        return;
    }
    const auto group = key_->algorithmGroup();
    EXPECT_EQ(group.outcome, Outcome::Complete);
    EXPECT_EQ(group.value, u"RSA"_s);
    const auto exported = key_->exportPkcs8();
    ASSERT_FALSE(exported.value.empty()) << exported.error.message().toStdString();
    EXPECT_EQ(exported.value.view().front(), '\x30') << "not a DER structure";
}

TEST_F(SystemKeyTest, ExportsStoredKeyOnlyEncrypted) {
    setUpKey(NCRYPT_ALLOW_EXPORT_FLAG);
    if (!key_) {
        return;
    }
    const auto plain = key_->exportPkcs8();
    EXPECT_TRUE(plain.value.empty());
    EXPECT_TRUE(plain.error);
    const auto encrypted = key_->exportEncryptedPkcs8();
    ASSERT_FALSE(encrypted.value.pkcs8.empty()) << encrypted.error.message().toStdString();
    const QSslKey key(encrypted.value.pkcs8.view().toByteArray(), QSsl::Rsa, QSsl::Der,
                      QSsl::PrivateKey, encrypted.value.passPhrase.view().toByteArray());
    EXPECT_EQ(key.length(), 2048);
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
    const auto store = localMachineCertificates().openStore(u"QuorinUnknownStore").value;
    EXPECT_TRUE(!store || store->next() == nullptr);
}

} // namespace
} // namespace quorin::platform
