#pragma once

// The system that the tests run on, as set by the build.
namespace quorin::test {

// On Windows the common application data folder and the control pipe belong to the machine, so only
// one test can run at a time. Elsewhere each test has its own.
inline constexpr bool kOnWindows = QUORIN_TEST_ON_WINDOWS != 0;

} // namespace quorin::test
