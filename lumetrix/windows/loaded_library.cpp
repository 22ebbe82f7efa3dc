#include "../loaded_library.h"

#include <windows.h>

LoadedLibrary::LoadedLibrary(const std::filesystem::path& file)
    : library_(LoadLibraryW(file.c_str())) {}

LoadedLibrary::~LoadedLibrary() {
    if (library_)
        FreeLibrary(static_cast<HMODULE>(library_));
}

LoadedLibrary::Address LoadedLibrary::address(const char* name) const {
    return library_
               ? reinterpret_cast<Address>(GetProcAddress(static_cast<HMODULE>(library_), name))
               : nullptr;
}

bool LoadedLibrary::isLoaded(const std::filesystem::path& file) {
    return GetModuleHandleW(file.c_str()) != nullptr;
}
