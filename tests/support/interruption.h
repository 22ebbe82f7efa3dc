#pragma once

#include <QProcess>

namespace quorin::test {

// Has `process` started in such a way that it can be interrupted alone. Before the start.
void prepareInterruption(QProcess& process);

// Asks a running process to end, as a person at its console or the system's shutdown does.
void interrupt(QProcess& process);

} // namespace quorin::test
