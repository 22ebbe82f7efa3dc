#include "support/interruption.h"

#include "platform/windows/system.h"

#include <gtest/gtest.h>

namespace quorin::test {

// Ctrl-C reaches all processes of a console, so the process gets its own console.
void prepareInterruption(QProcess& process) {
    process.setCreateProcessArgumentsModifier(
        [](QProcess::CreateProcessArguments* arguments) { arguments->flags |= CREATE_NO_WINDOW; });
}

// A process can be attached to one console only, so a helper program attaches to that of `process`.
void interrupt(QProcess& process) {
    EXPECT_EQ(QProcess::execute(QStringLiteral(QUORIN_PRESS_CTRL_C),
                                {QString::number(process.processId())}),
              0);
}

} // namespace quorin::test
