#pragma once

#include <utility>

namespace quorin::platform {

// A library loaded at run time and unloaded by the destructor. Empty if default-constructed. The
// object is not thread-safe; whether the library's functions are depends on the library.
class SharedLibrary {
public:
    SharedLibrary() = default;
    ~SharedLibrary() { unload(); }

    SharedLibrary(SharedLibrary&& other) noexcept
        : handle_(std::exchange(other.handle_, nullptr)) {}
    SharedLibrary& operator=(SharedLibrary&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    SharedLibrary(const SharedLibrary&) = delete;
    SharedLibrary& operator=(const SharedLibrary&) = delete;

    // Loads the library `name` (UTF-8). A bare file name is searched for in the system's usual
    // order and, on Windows, then in the folder of the library that contains this code; on Linux,
    // that folder is part of the usual order. Returns an empty object on failure.
    [[nodiscard]] static SharedLibrary load(const char* name);

    // Returns a description of why the system's search in the last load() on this thread failed.
    // Valid until the next call of load() or lastError() on this thread.
    [[nodiscard]] static const char* lastError();

    [[nodiscard]] explicit operator bool() const noexcept { return handle_ != nullptr; }

    // Returns the exported function `name`, or null if there is none. Its type is not checked.
    template<typename Function>
    [[nodiscard]] Function* function(const char* name) const {
        return reinterpret_cast<Function*>(symbol(name));
    }

private:
    using AnyFunction = void (*)();

    [[nodiscard]] AnyFunction symbol(const char* name) const;
    void unload() noexcept;

    void* handle_ = nullptr;
};

// Returns the file name of the logging library on this system.
[[nodiscard]] const char* loggingLibraryName();

// Returns the file name of the gateway library on this system.
[[nodiscard]] const char* gatewayLibraryName();

} // namespace quorin::platform
