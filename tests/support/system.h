#pragma once

// What differs for tests between the systems; the build says on which one they run.
namespace quorin::test {

// On Windows the common application data folder and the control pipe belong to the machine, so
// tests take the machine for themselves, one at a time. Elsewhere each has its own.
inline constexpr bool kOnWindows = QUORIN_TEST_ON_WINDOWS != 0;

} // namespace quorin::test
