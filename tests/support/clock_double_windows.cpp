#include "support/clock_double_windows.h"

#include "platform/windows/system.h"
#include "support/import_table_windows.h"

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace quorin::test {

namespace {

std::filesystem::path clockFile;

// The offset in seconds. The last one if the test is just writing a new one.
long long clockOffset() {
    static std::atomic<long long> offset = 0;
    std::ifstream file(clockFile);
    long long read = 0;
    if (file >> read) {
        offset = read;
    }
    return offset;
}

FILETIME currentTime() {
    constexpr long long kTicksPerSecond = 10'000'000;
    FILETIME time{};
    GetSystemTimeAsFileTime(&time);
    ULARGE_INTEGER ticks{};
    ticks.LowPart = time.dwLowDateTime;
    ticks.HighPart = time.dwHighDateTime;
    ticks.QuadPart += static_cast<ULONGLONG>(clockOffset() * kTicksPerSecond);
    return {ticks.LowPart, ticks.HighPart};
}

void WINAPI getSystemTimeAsFileTime(FILETIME* time) {
    *time = currentTime();
}

void WINAPI getSystemTime(SYSTEMTIME* time) {
    const FILETIME now = currentTime();
    FileTimeToSystemTime(&now, time);
}

void WINAPI getLocalTime(SYSTEMTIME* time) {
    SYSTEMTIME now{};
    getSystemTime(&now);
    SystemTimeToTzSpecificLocalTime(nullptr, &now, time);
}

} // namespace

void installClockDouble() {
    const wchar_t* const path = _wgetenv(L"QUORIN_TEST_CLOCK");
    if (path == nullptr) {
        return;
    }
    clockFile = path;
    replaceImport("GetSystemTimeAsFileTime", getSystemTimeAsFileTime);
    replaceImport("GetSystemTime", getSystemTime);
    replaceImport("GetLocalTime", getLocalTime);
}

} // namespace quorin::test
