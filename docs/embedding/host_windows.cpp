// A host program of the gateway for Windows. Usage: host SETTINGS primary|secondary

#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

// Returns the file `name` in the folder of this program, wherever it was started from.
std::wstring besideThisProgram(const std::wstring& name) {
    std::wstring path(32'768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return path.substr(0, path.find_last_of(L'\\') + 1) + name;
}

std::string utf8(const wchar_t* text) {
    const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, -1, bytes.data(), size, nullptr, nullptr);
    bytes.pop_back(); // the terminating NUL
    return bytes;
}

// The parameters of main() are in the system's code page, which lacks most letters.
std::vector<std::string> argumentsInUtf8() {
    int count = 0;
    wchar_t** const arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    std::vector<std::string> result;
    for (int i = 0; i < count; ++i) {
        result.push_back(utf8(arguments[i]));
    }
    LocalFree(arguments);
    return result;
}

} // namespace

int main() {
    // With these flags, the system searches for the DLLs that the gateway needs in the folder of
    // the gateway library, not in the current folder and PATH.
    const HMODULE library =
        LoadLibraryExW(besideThisProgram(L"libQuorinGatewayHttp.dll").c_str(), nullptr,
                       LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    using MainFunc = int(int, char**);
    const auto run = library != nullptr ? reinterpret_cast<MainFunc*>(reinterpret_cast<void*>(
                                              GetProcAddress(library, "QuorinGatewayHttpMainFunc")))
                                        : nullptr;
    if (run == nullptr) {
        std::fprintf(stderr, "cannot load the gateway: error %lu\n", GetLastError());
        return 3;
    }
    std::vector<std::string> arguments = argumentsInUtf8();
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    argv.push_back(nullptr);
    // Returns after a stop; ends the process if the start fails.
    return run(static_cast<int>(arguments.size()), argv.data());
}
