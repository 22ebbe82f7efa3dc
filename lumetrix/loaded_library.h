#pragma once

#include <filesystem>

// For tests: a library loaded at run time, as the gateway loads this one.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const std::filesystem::path& file);
    ~LoadedLibrary();

    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    // The exported function, null when there is none of that name.
    template<typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(address(name));
    }

    // True while the library is in the memory of this process.
    static bool isLoaded(const std::filesystem::path& file);

private:
    using Address = void (*)();
    Address address(const char* name) const;

    void* library_;
};
