#pragma once

#include <utility>

namespace platform {

// A library loaded at run time, unloaded when the object goes. A default object holds none.
// Moving hands the library over; an object may be used by one thread at a time, the functions
// found in it by as many as the library allows.
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

    // Loads the library named `name` (UTF-8). A bare file name is looked for by the system's
    // normal search, which begins beside the code that asks. Nothing loaded: an empty object.
    [[nodiscard]] static SharedLibrary load(const char* name);

    // Why the last load() on this thread found nothing; for messages to people.
    [[nodiscard]] static const char* lastError();

    [[nodiscard]] explicit operator bool() const noexcept { return handle_ != nullptr; }

    // The function exported as `name`, or null. The caller knows its type.
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

// File name of the logging library on this system.
[[nodiscard]] const char* loggingLibraryName();

// File name of the gateway library on this system.
[[nodiscard]] const char* gatewayLibraryName();

} // namespace platform
