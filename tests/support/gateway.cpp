#include "support/gateway.h"

#include "platform/control_pipe.h"
#include "support/deadline.h"
#include "support/system.h"

#include <QFile>
#include <QLocalSocket>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

// The environment variable with a folder that may contain another gateway library, program or
// bundled logging library for the tests, with seeded faults (scripts/mutate).
constexpr const char* kReplacementsVariable = "QUORIN_TEST_REPLACEMENTS";

QString folderOf(LogLibrary log) {
    switch (log) {
    case LogLibrary::Stub:
        return QStringLiteral(QUORIN_STUB_FOLDER);
    case LogLibrary::StubWithoutLog:
        return QStringLiteral(QUORIN_STUB_WITHOUT_LOG_FOLDER);
    case LogLibrary::StubWithoutSetUp:
        return QStringLiteral(QUORIN_STUB_WITHOUT_SET_UP_FOLDER);
    case LogLibrary::Bundled:
        return QStringLiteral(QUORIN_BUNDLED_FOLDER);
    case LogLibrary::None:
        break;
    }
    return QStringLiteral(QUORIN_EMPTY_FOLDER);
}

// Makes a process search these folders for libraries first, apart from its own folder.
void addLibraryFolders(QProcessEnvironment& environment, const QStringList& folders) {
    if constexpr (kOnWindows) {
        // The inherited PATH is dropped, as it may contain a logging library.
        environment.insert(u"PATH"_s, folders.join(u';'));
    } else {
        environment.insert(u"LD_LIBRARY_PATH"_s, folders.join(u':'));
    }
}

// Returns a program's output with the system's line ends converted to line feeds.
QByteArray asText(QByteArray output) {
    return kOnWindows ? output.replace("\r\n", "\n") : output;
}

} // namespace

QString gatewayProgram() {
    const QString replacement = qEnvironmentVariable(kReplacementsVariable) + u"/quorin-gateway";
    return QFile::exists(replacement) ? replacement : QStringLiteral(QUORIN_PROGRAM);
}

Gateway::Gateway(const Site& site, LogLibrary log) : site_(site) {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"QUORIN_COMMON_APPDATA"_s, site.appDataFolder());
    environment.insert(u"QUORIN_STUB_LOG"_s, site.recordPath());
    environment.insert(u"QUORIN_TEST_PRIVATE_KEY"_s, site.privateKeyPath());
    environment.insert(u"TMPDIR"_s, site.temporaryPath());
    addLibraryFolders(environment, {qEnvironmentVariable(kReplacementsVariable), folderOf(log),
                                    QStringLiteral(QUORIN_BARE_FOLDER)});
    process_.setProcessEnvironment(environment);
}

Gateway::~Gateway() {
    kill();
    if (!process_.isOpen()) {
        return; // never started
    }
    const QByteArray errors = errorOutput();
    if (!errors.isEmpty()) {
        std::fprintf(stderr, "gateway: %s\n", errors.constData());
    }
}

void Gateway::setEnvironment(const QString& name, const QString& value) {
    QProcessEnvironment environment = process_.processEnvironment();
    environment.insert(name, value);
    process_.setProcessEnvironment(environment);
}

void Gateway::start() {
    startWith({site_.settingsPath(), u"primary"_s});
}

void Gateway::startWith(const QStringList& arguments) {
    startProcess(QStringLiteral(QUORIN_TEST_HOST), arguments);
}

void Gateway::startUnder(const QStringList& command) {
    QStringList whole = command;
    whole << QStringLiteral(QUORIN_TEST_HOST) << site_.settingsPath() << u"primary"_s;
    const QString program = whole.takeFirst();
    startProcess(program, whole);
}

void Gateway::startProgram(const QStringList& arguments) {
    startProcess(gatewayProgram(), arguments);
}

void Gateway::startProcess(const QString& program, const QStringList& arguments) {
    prepareInterruption(process_);
    process_.start(program, arguments);
    ASSERT_TRUE(process_.waitForStarted(kTestTimeoutMs)) << process_.errorString().toStdString();
}

std::optional<int> Gateway::stop() {
    command("quit");
    return waitForExit();
}

void Gateway::command(const QByteArray& command) {
    QLocalSocket pipe;
    // A pipe that is a file is in the temporary folder of the gateway's process.
    const QString name = kOnWindows ? platform::kControlPipeName.toString() : site_.pipePath();
    ASSERT_TRUE(waitUntil([&] {
        pipe.connectToServer(name);
        return pipe.waitForConnected(kTestTimeoutMs);
    })) << pipe.errorString().toStdString();
    pipe.write(command);
    // The gateway closes the pipe after reading.
    ASSERT_TRUE(pipe.waitForBytesWritten(kTestTimeoutMs) ||
                pipe.state() == QLocalSocket::UnconnectedState);
    pipe.disconnectFromServer();
}

std::optional<int> Gateway::waitForExit() {
    if (process_.state() != QProcess::NotRunning && !process_.waitForFinished(kTestTimeoutMs)) {
        return std::nullopt;
    }
    return process_.exitStatus() == QProcess::NormalExit ? std::optional(process_.exitCode())
                                                         : std::nullopt;
}

QByteArray Gateway::errorOutput() {
    process_.waitForReadyRead(0); // without an event loop, nothing else reads
    return asText(process_.readAllStandardError());
}

QByteArray Gateway::output() {
    process_.waitForReadyRead(0);
    return asText(process_.readAllStandardOutput());
}

void Gateway::kill() {
    if (process_.state() != QProcess::NotRunning) {
        process_.kill();
        process_.waitForFinished(kTestTimeoutMs);
    }
}

} // namespace quorin::test
