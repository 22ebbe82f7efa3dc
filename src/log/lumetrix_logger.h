#pragma once

#include "platform/shared_library.h"

#include <cstdint>
#include <string>

namespace lumetrix {

// The library's own handle of a logger; opaque here.
using Handle = void*;

// Levels as the logging library numbers them.
enum class Level : std::int32_t { Debug = 2, Info = 3, Warn = 4, Error = 5 };

// What the lines of the log are meant to look like. The library decides; this is passed to it in
// no call.
inline constexpr const char* kLinePattern =
    "_dt:%Y%m%dT%H%M%S.%e%z\t_l:%l\t_th:%t\t_m:Quorin5\tmsg:%v";

// The functions of the logging library under their names. Each is null when the library, or that
// function in it, is missing. Integers are 32 bits, texts end with NUL and are UTF-8.
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

// Binds the logging library that is found at run time. Where it is missing, or lacks functions,
// the calls that would need it do nothing: a gateway without a log runs all the same.
//
// The calls may be made from any thread at once, as far as the library allows it; lumetrix_log
// must.
class Logger {
public:
    // Loads `libraryName` and looks its functions up. `name` goes with every line.
    Logger(std::string name, const char* libraryName);
    virtual ~Logger();

    Logger(const Logger&) = delete;
    Logger& operator=(const Logger&) = delete;

    // True when log() reaches the library. Callers ask before they build a costly text.
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
    platform::SharedLibrary module_;
    Functions functions_;
};

} // namespace lumetrix
