#pragma once

namespace quorin::test {

// Adds the number of seconds in the file named by QUORIN_TEST_CLOCK to the time of day. The file is
// read at each call, so a test can set the clock of a running gateway. Also loads the logging
// library, so that it uses this clock.
void installClockDouble();

} // namespace quorin::test
