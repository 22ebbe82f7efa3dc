// The program quorin-gateway as a process: control pipe, signals, limits.

#include "server/control_channel.h"
#include "support/client.h"
#include "support/deadline.h"
#include "support/gateway.h"
#include "support/site.h"
#include "support/system.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QStandardPaths>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <list>
#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;
using testing::Not;

constexpr int kPatienceMs = int(std::chrono::milliseconds(kPatience).count());

const QString kQuitLine = u"3 quit command recieved"_s;

class ProgramProcessTest : public testing::Test {
protected:
    ProgramProcessTest() { site_.writeSettings(); }

    QStringList runArguments() const { return {u"run"_s, site_.settingsPath(), u"primary"_s}; }

    // Where a pipe is a file, its location depends on the temporary folder of the process.
    QString pipeName() const { return kOnWindows ? kControlPipeName.toString() : site_.pipePath(); }

    // The state of a process changes only when its events are processed.
    static bool isRunning(const Gateway& process) {
        QCoreApplication::processEvents();
        return process.isRunning();
    }

    // Connects a controller that sends nothing.
    void connectSilently(QLocalSocket& controller) const {
        controller.connectToServer(pipeName());
        ASSERT_TRUE(controller.waitForConnected(kPatienceMs))
            << controller.errorString().toStdString();
    }

    // Waits until the pipe's server has `count` connections, whether accepted or not.
    bool waitUntilConnected(int count) const {
        return waitUntil([&] { return connections() == count; });
    }

    Site site_;

private:
    // The system lists the listening socket and the server's end of each connection. Their names
    // begin with the folder of the pipe.
    int connections() const {
        QFile list(u"/proc/net/unix"_s);
        if (!list.open(QIODevice::ReadOnly)) {
            return -1;
        }
        const QByteArray folder = site_.temporaryPath().toLocal8Bit() + '/';
        return int(list.readAll().count(folder)) - 1;
    }
};

class RunCommandTest : public ProgramProcessTest {
protected:
    void SetUp() override {
        if (kOnWindows) {
            GTEST_SKIP() << "this system has no such signals, limits or list of sockets";
        }
    }
};

TEST_F(RunCommandTest, SecondInterruptDoesNotWaitForPipe) {
    Gateway gateway(site_);
    gateway.startProgram(runArguments());
    ASSERT_TRUE(Client(site_.port()).isConnected());
    QLocalSocket silent;
    connectSilently(silent);
    gateway.interrupt();
    ASSERT_TRUE(waitUntilConnected(2)) << "the gateway sends the command to itself";
    gateway.interrupt();
    EXPECT_EQ(gateway.waitForExit(), std::nullopt);
    EXPECT_FALSE(isRunning(gateway));
    EXPECT_THAT(site_.logged(), Not(Contains(kQuitLine)));
}

TEST_F(RunCommandTest, StopsOnSigtermAfterSigusr2) {
    Gateway gateway(site_);
    gateway.startProgram(runArguments());
    ASSERT_TRUE(Client(site_.port()).isConnected());
    const QString sigusr2 = u"kill -s USR2 %1"_s.arg(gateway.processId());
    ASSERT_EQ(QProcess::execute(u"sh"_s, {u"-c"_s, sigusr2}), 0);
    gateway.interrupt();
    EXPECT_EQ(gateway.waitForExit(), 0);
    EXPECT_THAT(site_.logged(), Contains(kQuitLine));
}

TEST_F(RunCommandTest, RaisesSoftDescriptorLimitToHardOne) {
    if (QStandardPaths::findExecutable(u"prlimit"_s).isEmpty()) {
        GTEST_SKIP() << "this system has no prlimit";
    }
    Gateway gateway(site_);
    gateway.startProcess(u"prlimit"_s,
                         QStringList{u"--nofile=256:1000"_s, QStringLiteral(QUORIN_PROGRAM)} +
                             runArguments());
    ASSERT_TRUE(Client(site_.port()).isConnected());
    QFile limits(u"/proc/%1/limits"_s.arg(gateway.processId()));
    ASSERT_TRUE(limits.open(QIODevice::ReadOnly));
    EXPECT_THAT(limits.readAll().simplified().toStdString(),
                testing::HasSubstr("Max open files 1000 1000 files"));
    EXPECT_EQ(gateway.stop(), 0);
}

} // namespace
} // namespace quorin::test
