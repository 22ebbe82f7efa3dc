#pragma once

#include "support/client.h"
#include "support/paused_download.h"
#include "support/serving_test.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <memory>

namespace quorin::test {

// Returns `size` bytes of which every KiB is different.
inline QByteArray content(qsizetype size, int seed) {
    QByteArray bytes(size, Qt::Uninitialized);
    for (qsizetype i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>((i + seed) * 31 % 251 + i / 1024 * 7);
    }
    return bytes;
}

// For tests of a gateway that lacks something that it needs.
class FaultTest : public testing::Test {
protected:
    QByteArray request(const QByteArray& target) const {
        return exchange(site_.port(), get(target));
    }

    // Starts the gateway with a resource limit. For Linux.
    void startWithLimit(const QString& limit, const Settings& settings) {
        site_.writeSettings(settings);
        gateway_.startUnder({QStringLiteral("prlimit"), limit});
        ASSERT_EQ(request("/fwfiles/a"), streamedReply(small_));
    }

    // Changes a resource limit of the running gateway.
    void limit(const QString& limit) const {
        ASSERT_EQ(QProcess::execute(
                      QStringLiteral("prlimit"),
                      {QStringLiteral("--pid"), QString::number(gateway_.processId()), limit}),
                  0);
    }

    // A client with a download that the gateway cannot finish before the client reads on.
    std::unique_ptr<Client> beginDownload() const {
        auto client = std::make_unique<Client>(site_.port());
        client->limitReadAhead(4096);
        client->send(get("/fwfiles/large"));
        return client;
    }

    void writeLargeFile() const {
        site_.writeFile(QStringLiteral("fwfiles/large"), {});
        ASSERT_TRUE(QFile::resize(site_.rootPath(QStringLiteral("fwfiles/large")), 48 * kMiB));
    }

    FaultTest() { site_.writeFile(QStringLiteral("fwfiles/a"), small_); }

    const QByteArray small_ = content(100'000, 3);
    Site site_;
    Gateway gateway_{site_};
};

} // namespace quorin::test
