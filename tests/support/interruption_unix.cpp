#include "support/interruption.h"

namespace quorin::test {

void prepareInterruption(QProcess& /*process*/) {}

void interrupt(QProcess& process) {
    process.terminate();
}

} // namespace quorin::test
