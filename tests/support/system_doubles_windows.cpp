#include "support/system_doubles.h"

#include "support/call_recorder_windows.h"
#include "support/clock_double_windows.h"
#include "support/private_key_double_windows.h"

namespace quorin::test {

void installSystemDoubles() {
    installPrivateKeyDouble();
    installClockDouble();
    installCallRecorder();
}

void reportMisuseOfSystemDoubles() {
    reportKeysInUse();
}

} // namespace quorin::test
