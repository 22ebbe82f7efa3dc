#pragma once

namespace quorin::test {

// Checks for memory leaks if built with AddressSanitizer, otherwise does nothing. Waits until the
// threads of Qt's global pool and all other ended threads are gone, as the leak checker may crash
// while a thread ends. Prints leaks to standard error and exits with the sanitizer's exit code.
// Replaces the check at exit. Call it at the end of main().
void checkForLeaks();

} // namespace quorin::test
