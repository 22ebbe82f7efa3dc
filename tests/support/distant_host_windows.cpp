// A host in another folder than the gateway library. Usage: distant_host LIBRARY... SETTINGS GROUP
//
// Loads all libraries by their paths and calls the entry function of the last one. Uses no library
// but the system's.

#include <windows.h>

#include <cstdio>

int main(int argc, char** argv) {
    if (argc < 4) {
        return 98;
    }
    HMODULE library = nullptr;
    for (int i = 1; i < argc - 2; ++i) {
        library = LoadLibraryExA(argv[i], nullptr,
                                 LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
        if (library == nullptr) {
            std::fprintf(stderr, "%s: error %lu\n", argv[i], GetLastError());
            return 99;
        }
    }
    using MainFunc = int(int, char**);
    auto* const mainFunc = reinterpret_cast<MainFunc*>(
        reinterpret_cast<void*>(GetProcAddress(library, "QuorinGatewayHttpMainFunc")));
    return mainFunc == nullptr ? 99 : mainFunc(3, argv + argc - 3);
}
