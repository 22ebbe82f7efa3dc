#pragma once

#include "loaded_library.h"

#include <string>

// The logging library, loaded and called the way the gateway does it. For tests.
struct LoadedLumetrix : LoadedLibrary {
    LoadedLumetrix() : LoadedLibrary(LUMETRIX_LIBRARY) {}

    static bool isLoaded() { return LoadedLibrary::isLoaded(LUMETRIX_LIBRARY); }

    void* (*getLogger)() = function<void*()>("lumetrix_get_logger");
    void (*release)(void*) = function<void(void*)>("lumetrix_release");
    void (*log)(void*, const char*, int,
                const char*) = function<void(void*, const char*, int, const char*)>("lumetrix_log");
    void (*setOutputDir)(void*, const char*, const char*) =
        function<void(void*, const char*, const char*)>("lumetrix_set_output_dir");

    void logOneLine(const std::string& directory, const std::string& text) const {
        setOutputDir(getLogger(), directory.c_str(), "Gateway");
        log(getLogger(), "GW", 3, text.c_str());
    }
};
