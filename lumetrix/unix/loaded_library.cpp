#include "../loaded_library.h"

#include <dlfcn.h>

LoadedLibrary::LoadedLibrary(const std::filesystem::path& file)
    : library_(dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {}

LoadedLibrary::~LoadedLibrary() {
    if (library_) {
        dlclose(library_);
    }
}

LoadedLibrary::Address LoadedLibrary::address(const char* name) const {
    return library_ ? reinterpret_cast<Address>(dlsym(library_, name)) : nullptr;
}

bool LoadedLibrary::isLoaded(const std::filesystem::path& file) {
    void* const loaded = dlopen(file.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (loaded) {
        dlclose(loaded);
    }
    return loaded != nullptr;
}
