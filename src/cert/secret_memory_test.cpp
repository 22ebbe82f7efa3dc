// Searches the memory of the test program for secrets, including freed memory.

#include "cert/certificate_doubles.h"
#include "cert/encrypted_keys.h"
#include "cert/server_certificate.h"
#include "stub_lumetrix/recorded_log.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace quorin {
namespace {

constexpr qint64 kChunk = qint64{1} << 20;

// Returns how often the program's writable memory contains the inversion of `inverted`.
int countInMemory(const QByteArray& inverted) {
    QFile maps(u"/proc/self/maps"_s);
    QFile memory(u"/proc/self/mem"_s);
    EXPECT_TRUE(maps.open(QIODevice::ReadOnly));
    EXPECT_TRUE(memory.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    int count = 0;
    for (const QByteArray& line : maps.readAll().split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (fields.size() < 2 || !fields[1].startsWith("rw")) {
            continue;
        }
        const QList<QByteArray> bounds = fields[0].split('-');
        const qint64 begin = bounds[0].toLongLong(nullptr, 16);
        const qint64 end = bounds[1].toLongLong(nullptr, 16);
        for (qint64 position = begin; position < end; position += kChunk) {
            // The chunks overlap, so that each contains a secret that begins in it.
            const qint64 size = std::min(kChunk + inverted.size() - 1, end - position);
            QByteArray chunk;
            if (memory.seek(position)) {
                chunk = memory.read(size);
            }
            // Inverting the chunk instead would turn `inverted`, wherever it is, into the secret.
            const auto isInversion = [](char byte, char other) {
                return byte == static_cast<char>(~other);
            };
            for (auto found = chunk.cbegin();; ++found) {
                found =
                    std::search(found, chunk.cend(), inverted.begin(), inverted.end(), isInversion);
                if (found == chunk.cend()) {
                    break;
                }
                ++count;
            }
            chunk.fill('\0'); // otherwise a later search could find its content
        }
    }
    return count;
}

// Other tests can have left copies, so the test compares with the counts before.
int phrasesInMemory() {
    return countInMemory(test::invertedPassPhrase());
}

int numbersInMemory() {
    return countInMemory(test::invertedEcNumber());
}

TEST(SecretMemoryTest, SearchLeavesNoPassPhraseOrKey) {
    test::RecordedLog log;
    test::SystemDouble system;
    system.now = QDateTime(QDate(2024, 2, 29), QTime(12, 0), Qt::UTC);
    std::vector<test::CertificateSpec>& store = system.stores[u"My"_s];
    store.resize(1);
    store[0].displayName = "gateway.example";
    store[0].notBefore = store[0].notAfter = system.now;
    store[0].key->pkcs8.clear();
    store[0].key->group.value = u"ECDSA"_s;
    store[0].key->encryptedPkcs8 = test::encryptedEcKey();

    const int phrases = phrasesInMemory();
    const int numbers = numbersInMemory();
    store[0].key->passPhrase = test::passPhrase();
    EXPECT_GT(phrasesInMemory(), phrases) << "does not find a secret in memory";
    ServerCertificate found = findServerCertificate("gateway.example", system);
    ASSERT_FALSE(found.privateKey.isNull());
    store[0].key->passPhrase.fill('\0');
    EXPECT_LE(phrasesInMemory(), phrases);

    // The key is in use, but not in the form in which it was exported.
    EXPECT_LE(numbersInMemory(), numbers);
    found = ServerCertificate();
    EXPECT_LE(numbersInMemory(), numbers);
}

} // namespace
} // namespace quorin
