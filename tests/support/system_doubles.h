#pragma once

namespace quorin::test {

// Test doubles for functions of the system, for the test host only. Environment variables select
// them. On Linux, libraries that the tests preload serve the same purpose, and these functions do
// nothing.

// Replaces the functions in the libraries that this process has loaded. Call after the gateway
// library has been loaded and before it is used.
void installSystemDoubles();

// Writes a line to standard error for each misuse of a double. Call after the gateway has ended.
void reportMisuseOfSystemDoubles();

} // namespace quorin::test
