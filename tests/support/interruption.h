#pragma once

#include <QProcess>

namespace quorin::test {

// Configures `process` so that it can be interrupted without affecting other processes. Call before
// the start.
void prepareInterruption(QProcess& process);

// Interrupts a running process as Ctrl-C at its console or a system shutdown does.
void interrupt(QProcess& process);

} // namespace quorin::test
