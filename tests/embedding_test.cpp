// The example host program of the documentation.

#include "support/client.h"
#include "support/gateway.h"
#include "support/messages.h"
#include "support/site.h"
#include "support/system.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class EmbeddingTest : public testing::Test {
protected:
    EmbeddingTest() { site_.writeSettings(); }

    const QString host_ = QStringLiteral(QUORIN_EXAMPLE_HOST);
    Site site_;
    Gateway gateway_{site_};
};

TEST_F(EmbeddingTest, ServesUntilStopped) {
    site_.writeFile(u"fwfiles/a"_s, "content");
    gateway_.startProcess(host_, {site_.settingsPath(), u"primary"_s});
    EXPECT_EQ(exchange(site_.port(), get("/fwfiles/a")), streamedReply("content"));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_THAT(site_.logged().last().toStdString(), testing::EndsWith("[Status] Success"));
}

TEST_F(EmbeddingTest, ReadsSettingsFromNonAsciiPath) {
    const QString settings = site_.temporaryPath() + u"/Größe 設定.xml";
    ASSERT_TRUE(QFile::copy(site_.settingsPath(), settings));
    gateway_.startProcess(host_, {settings, u"primary"_s});
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(EmbeddingTest, FindsGatewayIfStartedThroughPath) {
    const QFileInfo host(host_);
    if constexpr (kOnWindows) {
        // The system searches the PATH of the process that calls it.
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", QDir::toNativeSeparators(host.path()).toLocal8Bit());
        gateway_.startProcess(host.completeBaseName(), {site_.settingsPath(), u"primary"_s});
        qputenv("PATH", path);
    } else {
        gateway_.startProcess(u"/bin/sh"_s, {u"-c"_s, u"PATH=$1; exec $2 $3 primary"_s, u"sh"_s,
                                             host.path(), host.fileName(), site_.settingsPath()});
    }
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(EmbeddingTest, ExitsWithFailureIfStartFails) {
    gateway_.startProcess(host_, {site_.settingsPath(), u"third"_s});
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_THAT(site_.logged(),
                testing::Contains(u"5 [End] the second argument (third) is not parsable."_s));
}

} // namespace
} // namespace quorin::test
