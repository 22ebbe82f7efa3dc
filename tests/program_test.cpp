// The program quorin-gateway as a process: commands, control pipe, signals, limits.

#include "platform/control_pipe.h"
#include "support/client.h"
#include "support/deadline.h"
#include "support/lifecycle_fixture.h"
#include "support/paused_download.h"
#include "support/pipe_obstacle.h"
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

#include <list>
#include <memory>
#include <optional>
#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::Contains;
using testing::Not;

class ProgramTest : public LifecycleTest {
protected:
    // Runs quorin-gateway to its end and returns its exit code.
    std::optional<int> run(const QStringList& arguments) {
        Gateway program(site_);
        program.startProgram(arguments);
        const std::optional<int> code = program.waitForExit();
        output_ = program.output();
        errors_ = program.errorOutput();
        return code;
    }

    // Returns true if the interruption ended the process before the gateway stopped.
    bool wasKilledByInterrupt(Gateway& process) const {
        const std::optional<int> code = process.waitForExit();
        // Windows returns an exit code after Ctrl-C, which is 0 under Wine.
        return (!code || (kOnWindows && *code == 0)) &&
               !site_.logged().contains(endLine(arguments(), u"Success"_s));
    }

    QStringList runArguments() const { return {u"run"_s, site_.settingsPath(), u"primary"_s}; }

    // Where a pipe is a file, its location depends on the temporary folder of the process.
    QString pipeName() const {
        return kOnWindows ? platform::kControlPipeName.toString() : site_.pipePath();
    }

    // The state of a process changes only when its events are processed.
    static bool isRunning(const Gateway& process) {
        QCoreApplication::processEvents();
        return process.isRunning();
    }

    // Connects a controller that sends nothing.
    void connectSilently(QLocalSocket& controller) const {
        controller.connectToServer(pipeName());
        ASSERT_TRUE(controller.waitForConnected(kTestTimeoutMs))
            << controller.errorString().toStdString();
    }

    // Waits until the process handles SIGTERM itself, on a system that reports that: it then blocks
    // the signal in its main thread.
    static bool waitUntilSigtermIsWatched(const Gateway& process) {
        constexpr qulonglong sigterm = 1U << (15 - 1);
        return kOnWindows || waitUntil([&] {
                   const QByteArray blocked = statusField(process, "SigBlk");
                   return (blocked.toULongLong(nullptr, 16) & sigterm) != 0;
               });
    }

    // Waits until the pipe's server has `count` connections, whether accepted or not.
    bool waitUntilConnected(int count) const {
        return waitUntil([&] { return connections() == count; });
    }

    QByteArray output_; // of run()
    QByteArray errors_;

private:
    // Returns a field of /proc/<pid>/status.
    static QByteArray statusField(const Gateway& process, const QByteArray& name) {
        QFile status(u"/proc/%1/status"_s.arg(process.processId()));
        if (!status.open(QIODevice::ReadOnly)) {
            return {};
        }
        const QByteArray label = "\n" + name + ":\t";
        const QByteArray text = status.readAll();
        const qsizetype begin = text.indexOf(label) + label.size();
        return text.mid(begin, text.indexOf('\n', begin) - begin);
    }

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

TEST_F(ProgramTest, ReturnsExitCodeOfGateway) {
    ASSERT_TRUE(QFile::remove(site_.settingsPath()));
    EXPECT_EQ(run(runArguments()), 1);
}

TEST_F(ProgramTest, WrongUsagePrintsOneLineAndExitsWith64) {
    const QString settings = site_.settingsPath();
    for (const QStringList& arguments :
         {QStringList{}, QStringList{u"serve"_s}, QStringList{u"run"_s},
          QStringList{u"run"_s, settings}, QStringList{u"run"_s, settings, u"Primary"_s},
          QStringList{u"run"_s, settings, u"primary"_s, u"x"_s}, QStringList{u"stop"_s, u"now"_s},
          QStringList{u"status"_s, u"now"_s}, QStringList{u"check"_s},
          QStringList{u"check"_s, settings}, QStringList{u"check"_s, settings, u"Primary"_s},
          QStringList{u"check"_s, settings, u"primary"_s, u"x"_s},
          QStringList{u"check"_s, u"--help"_s, u"primary"_s, u"x"_s}}) {
        EXPECT_EQ(run(arguments), 64);
        EXPECT_EQ(errors_.count('\n'), 1) << errors_.toStdString();
        EXPECT_TRUE(errors_.startsWith("quorin-gateway: ")) << errors_.toStdString();
        EXPECT_EQ(output_, "");
    }
}

TEST_F(ProgramTest, PrintsHelpAndVersionToStandardOutput) {
    EXPECT_EQ(run({u"--help"_s}), 0);
    EXPECT_TRUE(output_.startsWith("usage: quorin-gateway run SETTINGS primary|secondary\n"));
    EXPECT_EQ(run({u"--version"_s}), 0);
    EXPECT_EQ(output_, "quorin-gateway " QUORIN_VERSION "\n");
}

TEST_F(ProgramTest, PrintsHelpOfEachCommand) {
    for (const QString& command : {u"run"_s, u"check"_s, u"status"_s, u"stop"_s}) {
        for (const QString& option : {u"--help"_s, u"-h"_s}) {
            EXPECT_EQ(run({command, option}), 0);
            EXPECT_TRUE(output_.startsWith(QByteArray("usage: quorin-gateway " + command.toUtf8())))
                << output_.toStdString();
            EXPECT_TRUE(output_.contains("\nExit codes:  0")) << output_.toStdString();
            EXPECT_EQ(errors_, "");
        }
    }
}

TEST_F(ProgramTest, RunsUntilStopped) {
    gateway_.startProgram({u"run"_s, site_.settingsPath(), u"secondary"_s});
    EXPECT_TRUE(isListening());
    EXPECT_EQ(run({u"stop"_s}), 0);
    EXPECT_EQ(errors_, "");
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_EQ(site_.logged().last(), endLine(arguments(u"secondary"_s), u"Success"_s));
}

TEST_F(ProgramTest, ReadsSettingsFileWithUnicodeName) {
    const QString path = QFileInfo(site_.settingsPath()).path() + u"/\u00fcber \u8a2d\u5b9a.xml";
    ASSERT_TRUE(QFile::copy(site_.settingsPath(), path));
    gateway_.startProgram({u"run"_s, path, u"primary"_s});
    EXPECT_TRUE(isListening());
    EXPECT_EQ(gateway_.stop(), 0);
    EXPECT_EQ(site_.logged().last(), endLine(path + u" primary", u"Success"_s));
}

TEST_F(ProgramTest, FinishesDownloadAfterInterrupt) {
    const QByteArray content(kLargeSize, 'x');
    site_.writeFile(u"fwfiles/large.bin"_s, content);
    gateway_.startProgram(runArguments());
    const auto client = startDownload(site_.port(), "/fwfiles/large.bin", kLargeSize);
    gateway_.interrupt();
    ASSERT_TRUE(site_.waitUntilLogged(kQuitLine));
    EXPECT_TRUE(client->readToEnd() == content);
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_EQ(site_.logged().last(), endLine(arguments(), u"Success"_s));
}

TEST_F(ProgramTest, SecondInterruptEndsDownload) {
    site_.writeFile(u"fwfiles/large.bin"_s, QByteArray(kLargeSize, 'x'));
    gateway_.startProgram(runArguments());
    const auto client = startDownload(site_.port(), "/fwfiles/large.bin", kLargeSize);
    gateway_.interrupt();
    ASSERT_TRUE(site_.waitUntilLogged(kQuitLine));
    gateway_.interrupt();
    EXPECT_TRUE(wasKilledByInterrupt(gateway_));
}

TEST_F(ProgramTest, InterruptedSecondInstanceKeepsFirstRunning) {
    gateway_.start();
    EXPECT_TRUE(isListening());
    Gateway second(site_);
    second.startProgram(runArguments());
    ASSERT_TRUE(waitUntilSigtermIsWatched(second));
    second.interrupt();
    EXPECT_TRUE(wasKilledByInterrupt(second));
    EXPECT_EQ(exchange(site_.port(), get("/api/x")), kReply500);
    EXPECT_EQ(gateway_.stop(), 0);
}

class StopCommandTest : public ProgramTest {};

TEST_F(StopCommandTest, ReportsMissingGateway) {
    EXPECT_EQ(run({u"stop"_s}), 1);
    EXPECT_EQ(errors_, "quorin-gateway: no gateway listens for commands on this machine\n");
}

TEST_F(StopCommandTest, WaitsUntilServerClosesPipe) {
    QLocalServer server;
    ASSERT_TRUE(server.listen(pipeName())) << server.errorString().toStdString();
    std::unique_ptr<QLocalSocket> connection;
    const auto acceptCommand = [&] {
        ASSERT_TRUE(server.waitForNewConnection(kTestTimeoutMs));
        connection.reset(server.nextPendingConnection());
        ASSERT_TRUE(connection->waitForReadyRead(kTestTimeoutMs));
        EXPECT_EQ(connection->readAll(), "quit");
    };
    Gateway first(site_);
    first.startProgram({u"stop"_s});
    acceptCommand();
    const std::unique_ptr<QLocalSocket> firstConnection = std::move(connection);
    // A process that did not wait would end before another one has started and sent its command.
    Gateway second(site_);
    second.startProgram({u"stop"_s});
    acceptCommand();
    EXPECT_TRUE(isRunning(first));
    connection.reset();
    EXPECT_EQ(second.waitForExit(), 0);
    EXPECT_EQ(second.errorOutput(), "");
    EXPECT_TRUE(isRunning(first));
    firstConnection->abort();
    EXPECT_EQ(first.waitForExit(), 0);
    EXPECT_EQ(first.errorOutput(), "");
}

TEST_F(StopCommandTest, RetriesWhilePipeIsBusy) {
    QLocalServer server;
    server.setListenBacklogSize(1);
    ASSERT_TRUE(server.listen(pipeName())) << server.errorString().toStdString();
    // The server accepts only when this thread processes events.
    std::list<QLocalSocket> controllers;
    do {
        controllers.emplace_back().connectToServer(pipeName());
    } while (controllers.back().state() == QLocalSocket::ConnectedState);
    Gateway stop(site_);
    stop.startProgram({u"stop"_s});
    // A process that did not retry would end before another one has done more.
    Gateway failing(site_);
    failing.startProgram({u"run"_s, u"missing"_s, u"primary"_s});
    EXPECT_EQ(failing.waitForExit(), 1);
    ASSERT_TRUE(isRunning(stop));
    controllers.clear();
    QByteArray command;
    while (command.isEmpty()) {
        ASSERT_TRUE(server.hasPendingConnections() || server.waitForNewConnection(kTestTimeoutMs));
        const std::unique_ptr<QLocalSocket> connection(server.nextPendingConnection());
        connection->waitForReadyRead(kTestTimeoutMs);
        command = connection->readAll();
    }
    EXPECT_EQ(command, "quit");
    EXPECT_EQ(stop.waitForExit(), 0);
    EXPECT_EQ(stop.errorOutput(), "");
}

TEST_F(StopCommandTest, WaitsForEarlierControllers) {
    if (kOnWindows) {
        GTEST_SKIP() << "this system does not list the connections of a pipe";
    }
    gateway_.start();
    ASSERT_TRUE(isListening());
    QLocalSocket first;
    connectSilently(first);
    QLocalSocket second;
    connectSilently(second);
    Gateway stop(site_);
    stop.startProgram({u"stop"_s});
    ASSERT_TRUE(waitUntilConnected(3));
    EXPECT_TRUE(isRunning(stop));
    first.abort();
    ASSERT_TRUE(waitUntilConnected(2));
    EXPECT_TRUE(isRunning(stop));
    EXPECT_THAT(site_.logged(), Not(Contains(kQuitLine)));
    second.abort();
    EXPECT_EQ(stop.waitForExit(), 0);
    EXPECT_EQ(stop.errorOutput(), "");
    EXPECT_EQ(gateway_.waitForExit(), 0);
    EXPECT_THAT(site_.logged(), Contains(kQuitLine));
}

TEST_F(StopCommandTest, ReportsDeniedAccess) {
    const QByteArray message =
        "quorin-gateway: permission denied: cannot open the gateway's control pipe\n";
    if (kOnWindows) {
        const PipeObstacle pipe(site_);
        EXPECT_EQ(run({u"stop"_s}), 77);
        EXPECT_EQ(errors_, message);
        return;
    }
    const QStringList asOtherUser{u"setpriv"_s, u"--reuid=65534"_s, u"--regid=65534"_s,
                                  u"--clear-groups"_s};
    const auto executeAsOtherUser = [&](const QStringList& command) {
        return QProcess::execute(asOtherUser.first(), asOtherUser.mid(1) + command);
    };
    if (QStandardPaths::findExecutable(asOtherUser.first()).isEmpty() ||
        executeAsOtherUser({u"true"_s}) != 0) {
        GTEST_SKIP() << "this account cannot start a process as another user";
    }
    gateway_.start();
    ASSERT_TRUE(isListening());

    // The other user can reach the pipe's file and the program: only the file's mode is left to
    // deny access.
    const QString program = copyProgram();
    const QString folder = QFileInfo(program).path();
    const QFile::Permissions everyone =
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther;
    for (const QString& path : {folder, site_.temporaryPath(), program}) {
        ASSERT_TRUE(QFile::setPermissions(path, everyone));
    }
    ASSERT_EQ(executeAsOtherUser({u"test"_s, u"-S"_s, site_.pipePath()}), 0);

    Gateway stop(site_);
    stop.startProcess(asOtherUser.first(), asOtherUser.mid(1) + QStringList{program, u"stop"_s});
    EXPECT_EQ(stop.waitForExit(), 77);
    EXPECT_EQ(stop.errorOutput(), message);
    EXPECT_THAT(site_.logged(), Not(Contains(kQuitLine)));
    EXPECT_EQ(gateway_.stop(), 0);
}

class RunCommandTest : public ProgramTest {};

TEST_F(RunCommandTest, SecondInterruptDoesNotWaitForPipe) {
    if (kOnWindows) {
        GTEST_SKIP()
            << "Wine delivers Ctrl-C only after the handler of an earlier one has returned";
    }
    gateway_.startProgram(runArguments());
    ASSERT_TRUE(isListening());
    QLocalSocket silent;
    connectSilently(silent);
    gateway_.interrupt();
    ASSERT_TRUE(waitUntilConnected(2)) << "the gateway sends the command to itself";
    gateway_.interrupt();
    EXPECT_TRUE(wasKilledByInterrupt(gateway_));
    EXPECT_FALSE(isRunning(gateway_));
    EXPECT_THAT(site_.logged(), Not(Contains(kQuitLine)));
}

TEST_F(RunCommandTest, RaisesSoftDescriptorLimitToHardOne) {
    if (QStandardPaths::findExecutable(u"prlimit"_s).isEmpty()) {
        GTEST_SKIP() << "this system has no prlimit";
    }
    gateway_.startProcess(u"prlimit"_s,
                          QStringList{u"--nofile=256:1000"_s, gatewayProgram()} + runArguments());
    ASSERT_TRUE(isListening());
    QFile limits(u"/proc/%1/limits"_s.arg(gateway_.processId()));
    ASSERT_TRUE(limits.open(QIODevice::ReadOnly));
    EXPECT_THAT(limits.readAll().simplified().toStdString(),
                testing::HasSubstr("Max open files 1000 1000 files"));
    EXPECT_EQ(gateway_.stop(), 0);
}

} // namespace
} // namespace quorin::test
