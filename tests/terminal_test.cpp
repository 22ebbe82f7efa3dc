// What `quorin-gateway run` prints on a terminal.

#include "support/lifecycle_fixture.h"

#include <QTcpServer>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

class TerminalTest : public LifecycleTest {
protected:
    // Starts `quorin-gateway run` on a pseudo-terminal.
    void startOnTerminal() {
        const QString command =
            u'\'' + gatewayProgram() + u"' run '" + site_.settingsPath() + u"' primary";
        gateway_.startProcess(
            u"script"_s, {u"--quiet"_s, u"--return"_s, u"--command"_s, command, u"/dev/null"_s});
    }

    // Returns what the process has written to its terminal.
    QString terminalOutput() { return QString::fromUtf8(gateway_.output()).remove(u'\r'); }
};

TEST_F(TerminalTest, HasThreeLines) {
    startOnTerminal();
    ASSERT_TRUE(isListening());
    EXPECT_EQ(gateway_.stop(), 0);
    QString root = site_.rootPath(QString());
    root.chop(1);
    EXPECT_EQ(terminalOutput(),
              u"quorin-gateway: serves HTTP on port "_s + QString::number(site_.port()) +
                  u" of all IPv4 addresses, from " + root + u"\nquorin-gateway: log files are in " +
                  site_.logFolder() +
                  u"\nquorin-gateway: stop it with Ctrl-C or 'quorin-gateway stop'\n");
}

TEST_F(TerminalTest, ExplainsFailedStart) {
    QTcpServer other;
    ASSERT_TRUE(other.listen(QHostAddress::AnyIPv4, site_.port()));
    startOnTerminal();
    EXPECT_EQ(gateway_.waitForExit(), 1);
    EXPECT_EQ(terminalOutput(),
              u"quorin-gateway: the start failed: PrimaryGatewaySetting/Http/Port = \""_s +
                  QString::number(site_.port()) +
                  u"\": [End] failed to tcp server listening:The bound address is already in use. "
                  u"Set another port, or stop the program that uses this one.\n");
}

TEST_F(TerminalTest, ExplainsRunningGateway) {
    Gateway first(site_);
    first.start();
    ASSERT_TRUE(isListening());
    startOnTerminal();
    EXPECT_EQ(gateway_.waitForExit(), 2);
    EXPECT_EQ(terminalOutput(), u"quorin-gateway: the start failed: gateway: a gateway runs on "
                                u"this machine; another one would end with exit code 2. Stop it "
                                u"before you start another one.\n"_s);
    EXPECT_EQ(first.stop(), 0);
}

} // namespace
} // namespace quorin::test
