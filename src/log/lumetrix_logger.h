#pragma once

#include "platform/shared_library.h"

#include <cstdint>
#include <string>

namespace lumetrix {

// Opaque logger handle of the logging library.
using Handle = void*;

// The level numbers of the logging library.
enum class Level : std::int32_t { Debug = 2, Info = 3, Warn = 4, Error = 5 };

// The line format that the library is expected to write. For reference only: never passed to it.
inline constexpr const char* kLinePattern =
    "_dt:%Y%m%dT%H%M%S.%e%z\t_l:%l\t_th:%t\t_m:Quorin5\tmsg:%v";

// The exported functions of the logging library; null if the library does not export the function
// or is not loaded. Integers are 32 bits; strings are NUL-terminated UTF-8.
struct Functions {
    Handle (*lumetrix_get_logger)() = nullptr;
    void (*lumetrix_create)() = nullptr;
    void (*lumetrix_release)(Handle) = nullptr;
    void (*lumetrix_log)(Handle, const char* name, std::int32_t level,
                         const char* message) = nullptr;
    void (*lumetrix_set_output_dir)(Handle, const char* directory, const char* baseName) = nullptr;
    void (*lumetrix_set_output_level)(Handle, std::int32_t level) = nullptr;
    void (*lumetrix_set_enabled_console_out)() = nullptr;
    void (*lumetrix_set_pool_size)(Handle, std::int32_t size) = nullptr;
    void (*lumetrix_set_rotation)() = nullptr;
    void (*lumetrix_set_rotation_with_date)(Handle, std::int32_t files) = nullptr;
    void (*lumetrix_sync)() = nullptr;
    void (*lumetrix_output_all_logs)() = nullptr;
};

// A logger of the logging library, which is loaded at run time and unloaded by the destructor. A
// member function does nothing if the library function that it calls is missing: the gateway then
// runs without a log (docs/compatibility.md).
//
// Thread-safe if the library functions are; lumetrix_log must be.
class Logger {
public:
    // Loads `libraryName` (UTF-8) and fetches its logger. `name` is passed with every message.
    Logger(std::string name, const char* libraryName);
    virtual ~Logger();

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    // Returns false if log() does nothing; callers then need not build the message.
    [[nodiscard]] bool isLogging() const noexcept { return functions_.lumetrix_log != nullptr; }

    void log(Level level, const char* message) const;
    void release() const;
    void setOutputDir(const char* directory, const char* baseName) const;
    void setOutputLevel(Level level) const;
    void setPoolSize(std::int32_t size) const;
    void setRotationWithDate(std::int32_t files) const;

private:
    Handle handle_ = nullptr;
    std::string name_;
    quorin::platform::SharedLibrary module_;
    Functions functions_;
};

} // namespace lumetrix
