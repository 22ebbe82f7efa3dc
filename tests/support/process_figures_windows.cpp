#include "support/process_figures.h"

#include "platform/windows/handle.h"

#include <psapi.h>
#include <tlhelp32.h>

#include <algorithm>
#include <vector>

namespace quorin::test {

namespace {

using platform::Handle;

// The handles of all processes, as NtQuerySystemInformation() returns them.
struct SystemHandle {
    void* object;
    ULONG_PTR processId;
    ULONG_PTR value;
    ULONG access;
    USHORT creatorBackTraceIndex;
    USHORT objectType;
    ULONG attributes;
    ULONG reserved;
};
struct SystemHandles {
    ULONG_PTR count;
    ULONG_PTR reserved;
};
constexpr ULONG kSystemExtendedHandleInformation = 64;
constexpr LONG kInfoLengthMismatch = static_cast<LONG>(0xC0000004);

LONG querySystemInformation(ULONG kind, void* buffer, ULONG bufferSize, ULONG* size) {
    using Function = LONG(NTAPI*)(ULONG, void*, ULONG, ULONG*);
    static const auto function = reinterpret_cast<Function>(reinterpret_cast<void (*)()>(
        GetProcAddress(GetModuleHandleW(L"ntdll.dll"), "NtQuerySystemInformation")));
    return function(kind, buffer, bufferSize, size);
}

// GetProcessHandleCount() is not used: it returns 0 under Wine.
int handleCount(ULONG_PTR processId) {
    std::vector<char> buffer(1024 * 1024);
    ULONG size = 0;
    LONG status = 0;
    do {
        buffer.resize(std::max<std::size_t>(buffer.size(), size));
        status = querySystemInformation(kSystemExtendedHandleInformation, buffer.data(),
                                        static_cast<ULONG>(buffer.size()), &size);
        size += size / 2; // other processes open handles in the meantime
    } while (status == kInfoLengthMismatch);
    if (status < 0) {
        return 0;
    }
    const auto* const header = reinterpret_cast<const SystemHandles*>(buffer.data());
    const auto* const handles = reinterpret_cast<const SystemHandle*>(header + 1);
    return static_cast<int>(
        std::count_if(handles, handles + header->count,
                      [&](const SystemHandle& handle) { return handle.processId == processId; }));
}

int threadCount(DWORD processId) {
    const Handle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
    int count = 0;
    THREADENTRY32 thread{};
    thread.dwSize = sizeof thread;
    for (BOOL found = Thread32First(snapshot.get(), &thread); found != FALSE;
         found = Thread32Next(snapshot.get(), &thread)) {
        count += thread.th32OwnerProcessID == processId ? 1 : 0;
    }
    return count;
}

} // namespace

// Measured under Wine: a thread opens up to two handles only after its first connection, and these
// tests start up to eight threads before they measure.
const int kDescriptorsPerThread = 8;
const int kDescriptorsOpenedLate = 16;

// Measured under Wine: 17 MiB for 16 threads.
const qint64 kMemoryPerThread = 1536 * 1024;

std::optional<ProcessFigures> processFigures(qint64 processId) {
    const auto id = static_cast<DWORD>(processId);
    const Handle process(OpenProcess(PROCESS_QUERY_INFORMATION | PROCESS_VM_READ, FALSE, id));
    PROCESS_MEMORY_COUNTERS memory{};
    if (!process || GetProcessMemoryInfo(process.get(), &memory, sizeof memory) == FALSE) {
        return std::nullopt;
    }
    ProcessFigures figures;
    figures.privateBytes = static_cast<qint64>(memory.PagefileUsage);
    figures.descriptors = handleCount(id);
    figures.threads = threadCount(id);
    return figures;
}

std::string describeDescriptors(qint64 /*processId*/) {
    return {};
}

} // namespace quorin::test
