#include "check/network_check.h"

#include "check/finding_codes.h"
#include "check/settings_record.h"
#include "platform/control_pipe.h"
#include "support/free_port.h"
#include "support/print.h"
#include "support/settings.h"
#include "support/system.h"

#include <QDir>
#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::check {
namespace {

class PortCheckTest : public testing::Test {
protected:
    // Returns the findings about the port, with this gateway running.
    static Findings check(int port, const std::optional<RunningGateway>& running = {}) {
        const QTemporaryDir folder;
        QFile file(folder.filePath(u"settings.xml"_s));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        test::Settings settings;
        settings.Port = QByteArray::number(port);
        file.write(settings.toXml());
        file.close();
        Findings findings;
        checkPort(SettingsRecord(file.fileName(), true), running, findings);
        return findings;
    }

    static RunningGateway gatewayAt(int port) {
        GatewayStatus status;
        status.port = port;
        return {status};
    }

    const test::FreePort claim_;
    const quint16 port_ = claim_.number();
};

TEST_F(PortCheckTest, AcceptsFreePort) {
    EXPECT_TRUE(check(port_).empty());
    EXPECT_TRUE(check(port_).empty()) << "the port is free after the check";
    EXPECT_TRUE(check(0).empty());
}

TEST_F(PortCheckTest, ReportsPortInUse) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, port_));
    for (const int port : {int(port_), port_ + 65536}) {
        const Findings findings = check(port);
        ASSERT_EQ(findings.size(), 1u);
        EXPECT_EQ(findings[0].code, code::kPortUnavailable);
        EXPECT_EQ(findings[0].value, QString::number(port_));
        EXPECT_EQ(findings[0].reason,
                  u"[End] failed to tcp server listening:The bound address is already in use"_s);
        EXPECT_TRUE(findings[0].failsStart);
    }
}

TEST_F(PortCheckTest, AcceptsPortOfRunningGateway) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, port_));
    EXPECT_TRUE(check(port_, gatewayAt(port_)).empty());
    EXPECT_TRUE(check(port_, RunningGateway{}).empty());
    EXPECT_EQ(check(port_, gatewayAt(port_ + 1)).size(), 1u);
}

TEST(ControlPipeCheckTest, ReportsObstacle) {
    const QByteArray temporaryFolder = qgetenv("TMPDIR");
    const QTemporaryDir folder;
    qputenv("TMPDIR", QFile::encodeName(folder.path()));
    Findings findings;
    checkControlPipe(findings);
    EXPECT_TRUE(findings.empty());
    // The pipe of Windows is not a file.
    ASSERT_NE(QDir(folder.path()).mkpath(platform::kControlPipeName.toString()), test::kOnWindows);
    checkControlPipe(findings);
    const QString obstacle = platform::obstacleToControlPipe(platform::kControlPipeName.toString());
    qputenv("TMPDIR", temporaryFolder);
    if (test::kOnWindows) {
        EXPECT_TRUE(findings.empty());
        return;
    }
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].code, code::kPipeUnavailable);
    EXPECT_EQ(findings[0].subject, platform::kControlPipeName);
    EXPECT_EQ(findings[0].reason,
              QString(u"the gateway cannot listen on its control pipe: " + obstacle));
    EXPECT_TRUE(findings[0].failsStart);
}

TEST(RunningGatewayCheckTest, WarnsOfRunningGateway) {
    Findings findings;
    checkRunningGateway(std::nullopt, findings);
    EXPECT_TRUE(findings.empty());
    checkRunningGateway(RunningGateway{}, findings);
    ASSERT_EQ(findings.size(), 1u);
    EXPECT_EQ(findings[0].severity, Severity::Warning);
    EXPECT_EQ(findings[0].code, code::kGatewayRunning);
    EXPECT_FALSE(findings[0].failsStart);
}

} // namespace
} // namespace quorin::check
