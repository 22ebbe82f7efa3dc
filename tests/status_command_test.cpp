// `quorin-gateway status` and what `quorin-gateway run` prints.

#include "platform/control_pipe.h"
#include "support/deadline.h"
#include "support/free_port.h"
#include "support/lifecycle_fixture.h"
#include "support/system.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpServer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class StatusCommandTest : public LifecycleTest {
protected:
    std::optional<int> status() {
        Gateway program(site_);
        program.startProgram({u"status"_s});
        const std::optional<int> code = program.waitForExit();
        output_ = QString::fromUtf8(program.output());
        EXPECT_EQ(program.errorOutput(), "");
        return code;
    }

    void startServing(const QString& group = u"primary"_s) {
        gateway_.startProgram({u"run"_s, site_.settingsPath(), group});
        ASSERT_TRUE(waitUntil([this] { return status() == 0 && !output_.contains(u"not known"); }));
    }

    QString output_; // of status()
};

TEST_F(StatusCommandTest, ReportsMissingGateway) {
    EXPECT_EQ(status(), 3);
    EXPECT_EQ(output_, u"not running\n"_s);
}

TEST_F(StatusCommandTest, DescribesRunningGateway) {
    Settings settings;
    const FreePort port;
    settings.SecondaryPort = port.text();
    site_.writeSettings(settings);
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    startServing(u"secondary"_s);
    const QRegularExpression form(
        u"^running since (\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d) as process (\\d+)\n"
        u"settings: (.*) secondary\nport: (\\d+) \\(HTTP\\)\n$"_s);
    const QRegularExpressionMatch match = form.match(output_);
    ASSERT_TRUE(match.hasMatch()) << output_.toStdString();
    const QDateTime since = QDateTime::fromString(match.captured(1), u"yyyy-MM-dd HH:mm:ss"_s);
    EXPECT_GE(since, before);
    EXPECT_LE(since, QDateTime::currentDateTime());
    EXPECT_EQ(match.captured(2), QString::number(gateway_.processId()));
    EXPECT_EQ(match.captured(3), QDir::toNativeSeparators(site_.settingsPath()));
    EXPECT_EQ(match.captured(4), QString::fromUtf8(settings.SecondaryPort));
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(status(), 3);
}

// The description is removed before another gateway can start and write its own.
TEST_F(StatusCommandTest, DoesNotDescribeStoppingGateway) {
    gateway_.setEnvironment(u"QUORIN_STUB_BLOCKS"_s, u"Server End"_s);
    startServing();
    gateway_.command("quit");
    ASSERT_TRUE(site_.waitUntilLogged(endLine(arguments(), u"Success"_s)));
    EXPECT_EQ(status(), 0);
    EXPECT_TRUE(output_.startsWith(u"running; its settings are not known"_s))
        << output_.toStdString();
    gateway_.kill();
}

TEST_F(StatusCommandTest, DoesNotUseControlPipe) {
    startServing();
    QLocalSocket controller; // holds the pipe
    controller.connectToServer(kOnWindows ? platform::kControlPipeName.toString()
                                          : site_.pipePath());
    ASSERT_TRUE(controller.waitForConnected(kTestTimeoutMs));
    EXPECT_EQ(status(), 0);
    EXPECT_EQ(controller.state(), QLocalSocket::ConnectedState);
    controller.abort();
    EXPECT_EQ(gateway_.stop(), 0);
}

TEST_F(StatusCommandTest, NoticesKilledGateway) {
    startServing();
    gateway_.kill();
    EXPECT_EQ(status(), 3);
    EXPECT_EQ(output_, u"not running\n"_s);
    Gateway next(site_);
    next.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    EXPECT_TRUE(waitUntil([this] { return status() == 0 && !output_.contains(u"not known"); }));
    EXPECT_TRUE(output_.contains(QString::number(next.processId()))) << output_.toStdString();
    EXPECT_EQ(next.stop(), 0);
}

TEST_F(StatusCommandTest, ReportsGatewayOfOtherProgram) {
    gateway_.start();
    ASSERT_TRUE(isListening());
    EXPECT_EQ(status(), 0);
    EXPECT_TRUE(output_.startsWith(u"running; its settings are not known"_s))
        << output_.toStdString();
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(status(), 3);
}

class RunOutputTest : public LifecycleTest {};

TEST_F(RunOutputTest, IsEmptyWithoutTerminal) {
    gateway_.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    ASSERT_TRUE(isListening());
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(gateway_.output() + gateway_.errorOutput(), "");
}

TEST_F(RunOutputTest, IsEmptyWithoutTerminalIfStartFails) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, site_.port()));
    gateway_.startProgram({u"run"_s, site_.settingsPath(), u"primary"_s});
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_EQ(gateway_.output() + gateway_.errorOutput(), "");
}

} // namespace
} // namespace quorin::test
