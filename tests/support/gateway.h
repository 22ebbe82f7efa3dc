#pragma once

#include "support/interruption.h"
#include "support/site.h"

#include <QProcess>
#include <QString>
#include <QStringList>

#include <optional>

namespace quorin::test {

// The logging library that the gateway loads.
enum class LogLibrary { Stub, StubWithoutLog, StubWithoutSetUp, Bundled, None };

// Returns the path of the program quorin-gateway.
[[nodiscard]] QString gatewayProgram();

// The gateway library in a process of its own, with the data of a site, which must outlive the
// object. The destructor kills a process that still runs.
class Gateway {
public:
    explicit Gateway(const Site& site, LogLibrary log = LogLibrary::Stub);
    ~Gateway();

    // Starts the test host, which passes the arguments to the library's entry function. start()
    // passes the site's settings file and "primary".
    void start();
    void startWith(const QStringList& arguments);
    // Like start(), but runs the test host through `command`, which must execute its arguments.
    void startUnder(const QStringList& command);
    // Starts gatewayProgram().
    void startProgram(const QStringList& arguments);
    // Starts another program that loads the library.
    void startProcess(const QString& program, const QStringList& arguments);

    // Sends "quit", waits for the process and returns its exit code as waitForExit() does.
    [[nodiscard]] std::optional<int> stop();

    // Writes `command` to the control pipe as soon as the gateway listens on it.
    void command(const QByteArray& command);

    // Waits for the process and returns its exit code, or nothing if it did not end or crashed.
    [[nodiscard]] std::optional<int> waitForExit();

    [[nodiscard]] bool isRunning() const { return process_.state() == QProcess::Running; }
    // Kills the process if it runs, and waits until it has ended.
    void kill();
    // Interrupts the process as Ctrl-C at its console or a system shutdown does.
    void interrupt() { test::interrupt(process_); }
    [[nodiscard]] qint64 processId() const { return process_.processId(); }
    // Return what the process has written since the last call, with line feeds as line ends.
    [[nodiscard]] QByteArray errorOutput();
    [[nodiscard]] QByteArray output();

    // Sets an environment variable of the process. Call before the start.
    void setEnvironment(const QString& name, const QString& value);

private:
    const Site& site_;
    QProcess process_;
};

} // namespace quorin::test
