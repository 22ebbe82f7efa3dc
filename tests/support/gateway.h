#pragma once

#include "support/interruption.h"
#include "support/site.h"

#include <QProcess>
#include <QStringList>

#include <optional>

namespace quorin::test {

// Which logging library the gateway finds.
enum class LogLibrary { Stub, StubWithoutLog, StubWithoutSetUp, Bundled, None };

// The gateway library in a process of its own, on a site's data. Killed with the object.
class Gateway {
public:
    explicit Gateway(const Site& site, LogLibrary log = LogLibrary::Stub);
    ~Gateway();

    // Calls the library's entry function with the arguments a host would pass; the plain form is
    // the site's settings file and "primary".
    void start();
    void startWith(const QStringList& arguments);
    // As start(), by way of a command that runs the one behind it.
    void startUnder(const QStringList& command);
    // Starts the program quorin-gateway instead.
    void startProgram(const QStringList& arguments);
    // Starts another program, which loads the library.
    void startProcess(const QString& program, const QStringList& arguments);

    // Tells the gateway to stop, waits for its end and returns its exit code.
    [[nodiscard]] std::optional<int> stop();

    // Writes `command` to the control pipe, once somebody listens there.
    void command(const QByteArray& command);

    // Waits for the end; no code when it does not come, or came by a signal.
    [[nodiscard]] std::optional<int> waitForExit();

    [[nodiscard]] bool isRunning() const { return process_.state() == QProcess::Running; }
    void kill();
    // Asks the process to end, as a person at its console or the system's shutdown does.
    void interrupt() { test::interrupt(process_); }
    [[nodiscard]] qint64 processId() const { return process_.processId(); }
    [[nodiscard]] QByteArray errorOutput();
    [[nodiscard]] QByteArray output();

    // For the environment beyond what the site sets; before the start.
    void setEnvironment(const QString& name, const QString& value);

private:
    const Site& site_;
    QProcess process_;
};

} // namespace quorin::test
