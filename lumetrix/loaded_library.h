#pragma once

#include <filesystem>

// A library loaded at run time, the way the gateway loads this one. For tests.
class LoadedLibrary {
public:
    explicit LoadedLibrary(const std::filesystem::path& file);
    ~LoadedLibrary();

    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    // Returns null if the library is not loaded or exports no function of that name.
    template<typename Function>
    Function* function(const char* name) const {
        return reinterpret_cast<Function*>(address(name));
    }

    // Returns true if the library is loaded in this process.
    static bool isLoaded(const std::filesystem::path& file);

private:
    using Address = void (*)();
    Address address(const char* name) const;

    void* library_;
};
