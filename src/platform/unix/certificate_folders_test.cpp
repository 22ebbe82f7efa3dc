#include "platform/unix/certificate_folders.h"

#include "certificates/test_certificate.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

using quorin::test::CertificateFields;
using quorin::test::hashedFileName;
using quorin::test::KeyKind;
using quorin::test::selfSigned;
using quorin::test::TestAuthority;
using quorin::test::TestKey;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr mode_t kGroupReadable = 0640;
constexpr mode_t kWorldReadable = 0644;

// A key for the tests that do not care which one they use.
const TestKey& sharedKey() {
    static const TestKey key;
    return key;
}

QByteArray certificateNamed(const std::string& name, const TestKey& key = sharedKey()) {
    CertificateFields fields;
    fields.subject = {{"CN", name}};
    return selfSigned(key, fields);
}

class CertificateFoldersTest : public testing::Test {
protected:
    CertificateFoldersTest() {
        if (!QDir(folder_.path()).mkdir(u"My"_s)) {
            throw std::runtime_error("cannot create the store folder");
        }
    }

    // QTemporaryDir cannot remove files whose names are not UTF-8.
    ~CertificateFoldersTest() override { std::filesystem::remove_all(path("").toStdString()); }

    // Returns the path of `name` in the store "My" in the encoding of the file system.
    QByteArray path(const char* name) const {
        return QFile::encodeName(folder_.filePath(u"My/"_s)) + name;
    }

    void write(const char* name, const QByteArray& bytes, mode_t mode = kGroupReadable) {
        std::ofstream file(path(name).constData(), std::ios::binary | std::ios::trunc);
        file.write(bytes.data(), bytes.size());
        file.close();
        ASSERT_TRUE(file.good());
        ASSERT_EQ(chmod(path(name).constData(), mode), 0);
    }

    std::unique_ptr<CertificateStore> openStore() const { return folders_.openStore(u"My").value; }

    std::vector<std::string> namesInStore() const {
        std::vector<std::string> names;
        const auto store = openStore();
        while (const auto certificate = store->next()) {
            names.push_back(certificate->displayName());
        }
        return names;
    }

    std::unique_ptr<Certificate> firstCertificate() const { return openStore()->next(); }

    // Refer to the first certificate in the store.
    QByteArray exportedKey() const {
        const auto owner = firstCertificate();
        const auto key = owner->acquirePrivateKey().value;
        return key ? key->exportPkcs8().value.view().toByteArray() : QByteArray();
    }
    bool hasKey() const { return firstCertificate()->acquirePrivateKey().value != nullptr; }

    // Return why the first certificate has no key, or why its key is not exported.
    SystemError keyError() const { return firstCertificate()->acquirePrivateKey().error; }
    SystemError exportError() const {
        const auto owner = firstCertificate();
        return owner->acquirePrivateKey().value->exportPkcs8().error;
    }

    std::vector<std::string> issuersOfFirst() const {
        std::vector<std::string> names;
        for (const auto& issuer : firstCertificate()->issuers()) {
            names.push_back(issuer->displayName());
        }
        return names;
    }

    QTemporaryDir folder_;
    CertificateFolders folders_{folder_.path()};
};

TEST_F(CertificateFoldersTest, FailsToOpenStoreWithoutFolder) {
    const auto missing = folders_.openStore(u"WebHosting");
    EXPECT_FALSE(missing.value);
    EXPECT_EQ(missing.error.code(), static_cast<std::uint32_t>(ENOENT));
    EXPECT_EQ(missing.error.message(),
              folder_.filePath(u"WebHosting"_s) + u": No such file or directory");
    QFile file(folder_.filePath(u"WebHosting"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_EQ(folders_.openStore(u"WebHosting").error.code(), static_cast<std::uint32_t>(ENOTDIR));
    const auto my = folders_.openStore(u"My");
    EXPECT_TRUE(my.value);
    EXPECT_FALSE(my.error);
}

TEST_F(CertificateFoldersTest, EmptyFolderIsEmptyStore) {
    EXPECT_THAT(namesInStore(), IsEmpty());
}

TEST_F(CertificateFoldersTest, StaysAtEndOfStore) {
    write("one.pem", certificateNamed("one"));
    const auto store = openStore();
    EXPECT_TRUE(store->next());
    EXPECT_FALSE(store->next());
    EXPECT_FALSE(store->next());
}

TEST_F(CertificateFoldersTest, SortsFileNamesInByteOrder) {
    write("a.b.pem", certificateNamed("5"));
    write("\xff.pem", certificateNamed("9"));
    write("b.pem", certificateNamed("7"));
    write("9.pem", certificateNamed("2"));
    write("a.pem", certificateNamed("6"));
    write("B.pem", certificateNamed("3"));
    write("\xc3\xa4.pem", certificateNamed("8"));
    write("10.pem", certificateNamed("1"));
    write("a-b.pem", certificateNamed("4"));
    EXPECT_THAT(namesInStore(), ElementsAre("1", "2", "3", "4", "5", "6", "7", "8", "9"));
}

TEST_F(CertificateFoldersTest, ReadsOnlyPemFiles) {
    write("no.crt", certificateNamed("crt"));
    write("no.PEM", certificateNamed("PEM"));
    write("no.pem.old", certificateNamed("old"));
    write("pem", certificateNamed("pem"));
    write(".pem", certificateNamed("empty base name"));
    write("yes.pem", certificateNamed("yes"));
    EXPECT_THAT(namesInStore(), ElementsAre("yes"));
}

TEST_F(CertificateFoldersTest, SkipsFilesWithoutCertificate) {
    write("a.pem", "");
    write("b.pem", "garbage");
    write("c.pem", certificateNamed("truncated").chopped(50));
    write("d.pem", sharedKey().pkcs8Pem());
    write("e.pem", QByteArray(kMaxPemFileSize, '\n') + certificateNamed("in an oversized file"));
    ASSERT_EQ(mkdir(path("f.pem").constData(), 0700), 0);
    ASSERT_EQ(mkfifo(path("g.pem").constData(), 0600), 0);
    ASSERT_EQ(symlink("nowhere", path("h.pem").constData()), 0);
    write("z.pem", certificateNamed("valid"));
    EXPECT_THAT(namesInStore(), ElementsAre("valid"));
}

TEST_F(CertificateFoldersTest, SkipsFileRemovedDuringEnumeration) {
    write("a.pem", certificateNamed("a"));
    write("b.pem", certificateNamed("b"));
    const auto store = openStore();
    ASSERT_EQ(unlink(path("a.pem").constData()), 0);
    EXPECT_EQ(store->next()->displayName(), "b");
}

TEST_F(CertificateFoldersTest, FollowsSymbolicLinks) {
    write("elsewhere", certificateNamed("linked"));
    ASSERT_EQ(symlink("elsewhere", path("link.pem").constData()), 0);
    EXPECT_THAT(namesInStore(), ElementsAre("linked"));
}

TEST_F(CertificateFoldersTest, CertificateFileMayBeWorldReadable) {
    write("one.pem", certificateNamed("one"), kWorldReadable);
    write("one.key", sharedKey().pkcs8Pem());
    EXPECT_EQ(exportedKey(), sharedKey().pkcs8Der());
}

TEST_F(CertificateFoldersTest, CertificateOutlivesStore) {
    CertificateFields fields;
    fields.alternativeNames = "DNS:one.example";
    fields.serialNumber = "AB0001";
    const QByteArray pem = selfSigned(sharedKey(), fields);
    write("one.pem", pem + sharedKey().pkcs8Pem());
    const auto one = firstCertificate();
    EXPECT_THAT(one->dnsNames(), ElementsAre("one.example"));
    EXPECT_EQ(one->displayName(), "localhost");
    EXPECT_EQ(one->notBefore().toSecsSinceEpoch(), fields.notBefore.time_since_epoch().count());
    EXPECT_EQ(one->notAfter().toSecsSinceEpoch(), fields.notAfter.time_since_epoch().count());
    EXPECT_EQ(one->serialNumber(), QByteArray::fromHex("0100ab"));
    EXPECT_EQ(one->der(), quorin::test::derFromPem(pem));
    EXPECT_TRUE(one->acquirePrivateKey().value);
}

TEST_F(CertificateFoldersTest, ReadsKeyFromCertificateFile) {
    write("one.pem", sharedKey().pkcs8Pem() + certificateNamed("one"));
    EXPECT_EQ(exportedKey(), sharedKey().pkcs8Der());
}

TEST_F(CertificateFoldersTest, ReadsKeyFromKeyFile) {
    for (const KeyKind kind : {KeyKind::Rsa, KeyKind::EcP256, KeyKind::EcP384, KeyKind::Ed25519}) {
        const TestKey key(kind);
        write("one.pem", certificateNamed("one", key));
        write("one.key", key.pkcs8Pem());
        EXPECT_EQ(exportedKey(), key.pkcs8Der());
        if (kind != KeyKind::Ed25519) { // Ed25519 has no traditional format
            write("one.key", key.traditionalPem());
            EXPECT_EQ(exportedKey(), key.pkcs8Der());
        }
    }
}

TEST_F(CertificateFoldersTest, KeyHasAlgorithmGroup) {
    write("one.pem", certificateNamed("one"));
    write("one.key", sharedKey().pkcs8Pem());
    const auto owner = firstCertificate();
    const auto group = owner->acquirePrivateKey().value->algorithmGroup();
    EXPECT_EQ(group.outcome, Outcome::Complete);
    EXPECT_EQ(group.value, u"ECDSA"_s);
}

TEST_F(CertificateFoldersTest, AcceptsCertificateWithoutKey) {
    write("one.pem", certificateNamed("one"));
    EXPECT_FALSE(hasKey());
    write("two.key", sharedKey().pkcs8Pem());
    EXPECT_FALSE(hasKey());
    write("one.key", "garbage");
    EXPECT_FALSE(hasKey());
    write("one.key", QByteArray(kMaxPemFileSize, '\n') + sharedKey().pkcs8Pem());
    EXPECT_FALSE(hasKey());
}

TEST_F(CertificateFoldersTest, IgnoresKeyOfOtherCertificate) {
    const TestKey other;
    write("one.pem", certificateNamed("one"));
    write("one.key", other.pkcs8Pem());
    EXPECT_FALSE(hasKey());
    write("one.pem", other.pkcs8Pem() + certificateNamed("one"));
    EXPECT_FALSE(hasKey());
    write("one.key", sharedKey().pkcs8Pem());
    EXPECT_EQ(exportedKey(), sharedKey().pkcs8Der());
}

TEST_F(CertificateFoldersTest, WorldReadableKeyIsNotExportable) {
    write("one.pem", certificateNamed("one"));
    write("one.key", sharedKey().pkcs8Pem(), kWorldReadable);
    EXPECT_TRUE(hasKey());
    EXPECT_TRUE(exportedKey().isEmpty());
    EXPECT_EQ(exportError().message(), u"the key file is world-readable"_s);
    write("one.key", sharedKey().pkcs8Pem(), kGroupReadable);
    ASSERT_EQ(chmod(path("one.key").constData(), kGroupReadable), 0);
    EXPECT_EQ(exportedKey(), sharedKey().pkcs8Der());
}

TEST_F(CertificateFoldersTest, WorldReadableKeyInPemIsNotExportable) {
    write("one.pem", certificateNamed("one") + sharedKey().pkcs8Pem(), kWorldReadable);
    EXPECT_TRUE(hasKey());
    EXPECT_TRUE(exportedKey().isEmpty());
}

TEST_F(CertificateFoldersTest, EncryptedKeyIsNotExportable) {
    write("one.pem", certificateNamed("one"));
    for (const QByteArray& pem :
         {sharedKey().encryptedPkcs8Pem(), sharedKey().encryptedTraditionalPem()}) {
        write("one.key", pem);
        const auto owner = firstCertificate();
        const auto key = owner->acquirePrivateKey().value;
        ASSERT_TRUE(key);
        EXPECT_TRUE(key->exportPkcs8().value.empty());
        EXPECT_EQ(key->exportPkcs8().error.message(), u"the key has a pass phrase"_s);
        EXPECT_EQ(key->algorithmGroup().outcome, Outcome::NoSize);
    }
}

TEST_F(CertificateFoldersTest, ReportsWhyThereIsNoKey) {
    write("one.pem", certificateNamed("one"));
    const QString keyPath = QFile::decodeName(path("one.key"));
    EXPECT_EQ(keyError().code(), static_cast<std::uint32_t>(ENOENT));
    EXPECT_EQ(keyError().message(), keyPath + u": No such file or directory");
    write("one.key", "garbage");
    EXPECT_EQ(keyError().message(), keyPath + u": no start line");
    write("one.key", TestKey().pkcs8Pem());
    EXPECT_EQ(keyError().message(), keyPath + u": key values mismatch");
    write("one.key", sharedKey().pkcs8Pem());
    EXPECT_FALSE(keyError());
    EXPECT_FALSE(exportError());
}

TEST_F(CertificateFoldersTest, HasNoEncryptedExport) {
    write("one.pem", certificateNamed("one") + sharedKey().pkcs8Pem());
    const auto owner = firstCertificate();
    const auto exported = owner->acquirePrivateKey().value->exportEncryptedPkcs8();
    EXPECT_TRUE(exported.value.pkcs8.empty());
    EXPECT_FALSE(exported.error);
}

TEST_F(CertificateFoldersTest, FindsIssuersInCertificateFile) {
    const TestAuthority root("root");
    const TestAuthority intermediate("intermediate", root);
    const TestAuthority namesake("intermediate", root);
    write("one.pem", intermediate.issue(sharedKey()) + root.certificate() + namesake.certificate() +
                         intermediate.certificate());
    const auto issuers = firstCertificate()->issuers();
    ASSERT_EQ(issuers.size(), 1u);
    EXPECT_EQ(issuers[0]->der(), quorin::test::derFromPem(intermediate.certificate()));
    EXPECT_FALSE(issuers[0]->isSelfSigned());
    EXPECT_FALSE(issuers[0]->isWeak());
    const auto roots = issuers[0]->issuers();
    ASSERT_EQ(roots.size(), 1u);
    EXPECT_EQ(roots[0]->displayName(), "root");
    EXPECT_TRUE(roots[0]->isSelfSigned());
    EXPECT_TRUE(roots[0]->issuers().empty());
}

TEST_F(CertificateFoldersTest, FindsIssuersAmongAuthorities) {
    const TestAuthority root("root");
    const TestAuthority intermediate("intermediate", root);
    write("one.pem", intermediate.issue(sharedKey()));
    EXPECT_THAT(issuersOfFirst(), IsEmpty());
    const QByteArray file = "../" + hashedFileName(intermediate.certificate()).toLatin1();
    write(file.constData(), intermediate.certificate());
    qputenv("SSL_CERT_DIR", folder_.path().toUtf8());
    EXPECT_THAT(issuersOfFirst(), ElementsAre("intermediate"));
    qunsetenv("SSL_CERT_DIR");
}

TEST_F(CertificateFoldersTest, SelfSignedCertificateHasNoIssuers) {
    write("one.pem", certificateNamed("one") + certificateNamed("one"));
    EXPECT_THAT(issuersOfFirst(), IsEmpty());
    EXPECT_TRUE(firstCertificate()->isSelfSigned());
}

TEST_F(CertificateFoldersTest, CurrentTimeIsInUtc) {
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QDateTime now = folders_.currentTime();
    EXPECT_EQ(now.timeSpec(), Qt::UTC);
    EXPECT_LE(before, now);
    EXPECT_LE(now, QDateTime::currentDateTimeUtc());
}

TEST_F(CertificateFoldersTest, EncodesBase64) {
    const auto text = folders_.toBase64("abc");
    EXPECT_EQ(text.outcome, Outcome::Complete);
    EXPECT_EQ(text.value.view(), "YWJj\r\n");
}

TEST_F(CertificateFoldersTest, FindsStoresBelowProductFolder) {
    qputenv("QUORIN_COMMON_APPDATA", folder_.path().toUtf8());
    EXPECT_FALSE(localMachineCertificates().openStore(u"WebHosting").value);
    ASSERT_TRUE(QDir(folder_.path()).mkpath(u"Vemo/Quorin5/certificates/WebHosting"_s));
    EXPECT_TRUE(localMachineCertificates().openStore(u"WebHosting").value);
    EXPECT_FALSE(localMachineCertificates().openStore(u"My").value);
    qunsetenv("QUORIN_COMMON_APPDATA");
}

} // namespace
} // namespace quorin::platform
