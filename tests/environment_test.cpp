// What `quorin-gateway` reports if a library, the TLS backend or disk space is missing.

#include "support/lifecycle_fixture.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::HasSubstr;

class EnvironmentTest : public LifecycleTest {
protected:
    // Starts program_ and waits until it ends. Returns its exit code.
    std::optional<int> runProgram(const QString& command, const QStringList& prefix = {}) {
        const QStringList line =
            prefix + QStringList{program_, command, site_.settingsPath(), u"primary"_s};
        gateway_.startProcess(line.first(), line.mid(1));
        return gateway_.waitForExit();
    }

    std::string output() { return gateway_.output().toStdString(); }

    const QString program_ = copyProgram();
};

TEST_F(EnvironmentTest, RunNeedsGatewayLibrary) {
    gateway_.setEnvironment(u"LD_LIBRARY_PATH"_s, QString());
    EXPECT_EQ(runProgram(u"run"_s), 1);
    EXPECT_THAT(gateway_.errorOutput().toStdString(),
                testing::StartsWith("quorin-gateway: cannot load the gateway library "
                                    "libQuorinGatewayHttp.so: "));
}

TEST_F(EnvironmentTest, CheckReportsMissingGatewayLibrary) {
    gateway_.setEnvironment(u"LD_LIBRARY_PATH"_s, QString());
    EXPECT_EQ(runProgram(u"check"_s), 1);
    EXPECT_THAT(output(), HasSubstr("error gateway-library-missing: libQuorinGatewayHttp.so: "));
}

TEST_F(EnvironmentTest, CheckReportsMissingTlsBackend) {
    Settings settings;
    settings.HttpsEnabled = "true";
    site_.writeSettings(settings);
    QFile configuration(QFileInfo(program_).path() + u"/qt.conf");
    ASSERT_TRUE(configuration.open(QIODevice::WriteOnly));
    configuration.write("[Paths]\nPlugins=none\n");
    configuration.close();
    EXPECT_EQ(runProgram(u"check"_s), 1);
    EXPECT_EQ(gateway_.errorOutput(), "qt.network.ssl: No functional TLS backend was found\n");
    EXPECT_THAT(output(), HasSubstr("error tls-backend-missing: PrimaryGatewaySetting/Http/"
                                    "HttpsEnabled = \"true\": [End] HTTPS is enabled, but Qt has "
                                    "no usable TLS backend"));
}

TEST_F(EnvironmentTest, CheckReportsFullDisk) {
    ASSERT_TRUE(QDir().mkpath(site_.logFolder()));
    // Mounts a disk of 1 MiB that only this process and its children see.
    const QStringList prefix{u"unshare"_s,
                             u"--mount"_s,
                             u"sh"_s,
                             u"-c"_s,
                             u"mount -t tmpfs -o size=1m none \"$0\" && exec \"$@\""_s,
                             site_.logFolder()};
    if (QProcess::execute(prefix.first(), prefix.mid(1) + QStringList(u"true"_s)) != 0) {
        GTEST_SKIP() << "this account cannot mount";
    }
    EXPECT_EQ(runProgram(u"check"_s, prefix), 0);
    EXPECT_THAT(output(), HasSubstr("warning disk-space-low: " + site_.logFolder().toStdString() +
                                    ": only 1 MiB are free; on a full disk, log lines are lost. "
                                    "Free disk space.\n"));
}

} // namespace
} // namespace quorin::test
