#include "support/import_table_windows.h"

#include "platform/windows/system.h"

#include <psapi.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace quorin::test {

namespace {

[[noreturn]] void fail(const char* call) {
    std::fprintf(stderr, "test host: %s failed with error %lu\n", call, GetLastError());
    std::exit(98);
}

std::wstring systemFolder() {
    std::array<wchar_t, MAX_PATH> path{};
    return {path.data(), GetSystemDirectoryW(path.data(), MAX_PATH)};
}

bool isInSystemFolder(HMODULE library) {
    std::array<wchar_t, MAX_PATH> path{};
    GetModuleFileNameW(library, path.data(), MAX_PATH);
    const std::wstring folder = systemFolder();
    return _wcsnicmp(path.data(), folder.data(), folder.size()) == 0;
}

std::vector<HMODULE> loadedLibraries() {
    std::array<HMODULE, 512> modules{};
    DWORD size = 0;
    if (EnumProcessModules(GetCurrentProcess(), modules.data(), sizeof modules, &size) == FALSE ||
        size > sizeof modules) {
        fail("EnumProcessModules");
    }
    std::vector<HMODULE> libraries(modules.begin(), modules.begin() + size / sizeof(HMODULE));
    std::erase_if(libraries, [](HMODULE module) {
        return module == GetModuleHandleW(nullptr) || isInSystemFolder(module);
    });
    return libraries;
}

// The object at an offset from the start of a loaded library.
template<typename Object>
Object* at(HMODULE library, ULONGLONG offset) {
    return reinterpret_cast<Object*>(reinterpret_cast<char*>(library) + offset);
}

bool isNamed(HMODULE library, const IMAGE_THUNK_DATA& import, const char* name) {
    return !IMAGE_SNAP_BY_ORDINAL(import.u1.Ordinal) &&
           std::strcmp(at<IMAGE_IMPORT_BY_NAME>(library, import.u1.AddressOfData)->Name, name) == 0;
}

void store(IMAGE_THUNK_DATA& address, void (*function)()) {
    DWORD previous = 0;
    if (VirtualProtect(&address, sizeof address, PAGE_READWRITE, &previous) == FALSE) {
        fail("VirtualProtect");
    }
    address.u1.Function = reinterpret_cast<ULONGLONG>(function);
    VirtualProtect(&address, sizeof address, previous, &previous);
}

void replaceIn(HMODULE library, const char* name, void (*replacement)()) {
    const auto* const dosHeader = at<IMAGE_DOS_HEADER>(library, 0);
    const auto* const headers =
        at<IMAGE_NT_HEADERS>(library, static_cast<ULONGLONG>(dosHeader->e_lfanew));
    const IMAGE_DATA_DIRECTORY& table =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (table.Size == 0) {
        return;
    }
    const auto* imported = at<IMAGE_IMPORT_DESCRIPTOR>(library, table.VirtualAddress);
    for (; imported->Name != 0; ++imported) {
        const auto* function = at<IMAGE_THUNK_DATA>(library, imported->OriginalFirstThunk);
        auto* address = at<IMAGE_THUNK_DATA>(library, imported->FirstThunk);
        for (; function->u1.AddressOfData != 0; ++function, ++address) {
            if (isNamed(library, *function, name)) {
                store(*address, replacement);
            }
        }
    }
}

} // namespace

void replaceImport(const char* name, void (*replacement)()) {
    for (HMODULE library : loadedLibraries()) {
        replaceIn(library, name, replacement);
    }
}

} // namespace quorin::test
