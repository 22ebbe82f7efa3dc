// The lines that the journal of systemd receives from quorin-gateway.

#include "support/certificate_store.h"
#include "support/deadline.h"
#include "support/gateway_clock.h"
#include "support/lifecycle_fixture.h"

#include <QFile>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace quorin::test {
namespace {

class JournalTest : public LifecycleTest {
protected:
    // Starts the gateway as systemd does, which announces the stream that the journal reads.
    void startUnit(const QString& program = gatewayProgram()) {
        gateway_.startProcess(
            u"sh"_s,
            QStringList{u"-c"_s, u"JOURNAL_STREAM=$(stat -L -c %d:%i /dev/stderr) exec \"$@\""_s,
                        u"sh"_s, program} +
                runArguments());
    }

    void startHttpsUnit() {
        Settings settings;
        settings.HttpsEnabled = "true";
        site_.writeSettings(settings);
        startUnit();
        ASSERT_TRUE(isListening());
        ASSERT_EQ(gateway_.stop(), 0);
    }

    QStringList runArguments() const { return {u"run"_s, site_.settingsPath(), u"primary"_s}; }

    std::string started() const {
        return "<6>The gateway has started. Settings: " + settingsAndGroup();
    }
    std::string settingsAndGroup() const {
        return site_.settingsPath().toStdString() + " (primary).\n";
    }
};

TEST_F(JournalTest, ReceivesStartAndStop) {
    startUnit();
    ASSERT_TRUE(isListening());
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput().toStdString(), started() + "<6>The gateway has stopped.\n");
}

TEST_F(JournalTest, ReceivesReasonOfFailedStart) {
    ASSERT_TRUE(QFile::remove(site_.settingsPath()));
    startUnit();
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_EQ(gateway_.errorOutput().toStdString(),
              "<3>The gateway did not start (exit code 1): failed to open config file. Settings: " +
                  settingsAndGroup());
}

TEST_F(JournalTest, ReceivesDuplicateStart) {
    Gateway first(site_);
    first.start();
    ASSERT_TRUE(isListening());
    startUnit();
    EXPECT_EQ(gateway_.waitForExit(), 2);
    EXPECT_EQ(gateway_.errorOutput().toStdString(),
              "<3>The gateway did not start (exit code 2): Duplicate execution of applications. "
              "Settings: " +
                  settingsAndGroup());
    EXPECT_EQ(first.stop(), 0);
}

TEST_F(JournalTest, ReceivesMissingCertificate) {
    startHttpsUnit();
    EXPECT_EQ(gateway_.errorOutput().toStdString(),
              started() +
                  "<3>HTTPS is enabled, but there is no valid certificate for localhost with an "
                  "exportable private key. Clients cannot connect.\n"
                  "<6>The gateway has stopped.\n");
}

TEST_F(JournalTest, ReceivesReasonOfMissingLibrary) {
    gateway_.setEnvironment(u"LD_LIBRARY_PATH"_s, QString());
    startUnit(copyProgram());
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_THAT(gateway_.errorOutput().toStdString(),
                testing::HasSubstr("<3>The gateway did not start (exit code 1): cannot load the "
                                   "gateway library libQuorinGatewayHttp.so: "));
}

TEST_F(JournalTest, ReceivesEndOfCertificate) {
    installCertificate(site_, "localhost"); // valid for less than 30 days
    startHttpsUnit();
    EXPECT_THAT(gateway_.errorOutput().toStdString(),
                testing::MatchesRegex("<6>The gateway has started[^\n]*\n"
                                      "<4>The certificate for localhost expires at 20[-0-9T:]*Z. "
                                      "Install a new one and restart the gateway before then.\n"
                                      "<6>The gateway has stopped.\n"));
}

TEST_F(JournalTest, IsSilentWithoutJournal) {
    gateway_.startProgram(runArguments());
    ASSERT_TRUE(isListening());
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "");
    ASSERT_TRUE(QFile::remove(site_.settingsPath()));
    Gateway failing(site_);
    failing.startProgram(runArguments());
    EXPECT_EQ(failing.waitForExit(), 1);
    EXPECT_EQ(failing.errorOutput(), "");
}

TEST_F(JournalTest, ReceivesEndOfCertificateEveryDay) {
    if (const QString obstacle = GatewayClock::obstacle(); !obstacle.isEmpty()) {
        GTEST_SKIP() << obstacle.toStdString();
    }
    const GatewayClock clock(site_);
    clock.attachTo(gateway_, ClockEffect::TimeOfDayAndTimers);
    installCertificate(site_, "localhost"); // valid for an hour
    Settings settings;
    settings.HttpsEnabled = "true";
    site_.writeSettings(settings);
    startUnit();
    QByteArray events;
    const auto receives = [this, &events](const QByteArray& text) {
        return waitUntil([this, &events, &text] {
            events += gateway_.errorOutput();
            return events.contains(text);
        });
    };
    ASSERT_TRUE(receives("<4>The certificate for localhost expires at "));
    clock.set(24h);
    EXPECT_TRUE(isListening()); // wakes the event loop, which checks its timers
    EXPECT_TRUE(receives("<4>The certificate for localhost expired at ")) << events.toStdString();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.errorOutput(), "<6>The gateway has stopped.\n");
}

// Services are for Windows.
TEST_F(JournalTest, ReplacesServiceCommand) {
    for (const QStringList& arguments :
         {QStringList{u"service"_s}, QStringList{u"service"_s, u"install"_s},
          QStringList{u"service"_s, u"run"_s, site_.settingsPath(), u"primary"_s}}) {
        Gateway program(site_);
        program.startProgram(arguments);
        EXPECT_EQ(program.waitForExit(), 64);
        EXPECT_EQ(program.output(), "");
        EXPECT_EQ(program.errorOutput(),
                  "quorin-gateway: 'service' is for Windows; on this system, use the "
                  "systemd unit quorin-gateway.service\n");
    }
}

} // namespace
} // namespace quorin::test
