#include "lumetrix.h"

#include "logger.h"
#include "standard_error.h"

#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

struct lumetrix_logger final : lumetrix::Logger {};

namespace {

// Holds a logger that is never destroyed: threads of the host may log while the process exits, and
// the writer thread of a logger that was not released uses it. A released logger owns nothing, so
// nothing leaks.
union NeverDestroyed {
    lumetrix_logger logger;

    NeverDestroyed() : logger() {}
    ~NeverDestroyed() {}
};

NeverDestroyed global;

std::filesystem::path toPath(std::string_view utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

// Calls `call` if `logger` is the handle of the global logger. Reports exceptions to standard
// error.
template<typename Call>
void callLogger(const lumetrix_logger* logger, Call&& call) noexcept {
    if (logger != &global.logger) {
        return;
    }
    try {
        call(global.logger);
    } catch (const std::exception& error) {
        lumetrix::reportToStandardError(error.what());
    }
}

} // namespace

lumetrix_logger* lumetrix_get_logger() {
    try {
        global.logger.start();
        return &global.logger;
    } catch (const std::exception& error) {
        lumetrix::reportToStandardError(error.what());
        return nullptr;
    }
}

lumetrix_logger* lumetrix_create() {
    return lumetrix_get_logger();
}

void lumetrix_release(lumetrix_logger* logger) {
    callLogger(logger, [](auto& self) { self.release(); });
}

void lumetrix_log(lumetrix_logger* logger, const char* name, int level, const char* message) {
    // Checks the level first, so that a call below the output level returns at once.
    if (global.logger.isLogged(level) && name && message) {
        callLogger(logger, [=](auto& self) { self.log(level, message); });
    }
}

void lumetrix_set_output_dir(lumetrix_logger* logger, const char* directory,
                             const char* base_name) {
    if (directory && base_name && *base_name) {
        callLogger(logger, [=](auto& self) { self.setFile(toPath(directory), toPath(base_name)); });
    }
}

void lumetrix_set_output_level(lumetrix_logger* logger, int level) {
    callLogger(logger, [=](auto& self) { self.setLevel(level); });
}

void lumetrix_set_enabled_console_out(lumetrix_logger* logger, int enabled) {
    callLogger(logger, [=](auto& self) { self.setConsole(enabled != 0); });
}

void lumetrix_set_pool_size(lumetrix_logger* logger, int lines) {
    callLogger(logger, [=](auto& self) { self.setQueueLength(lines); });
}

void lumetrix_set_rotation(lumetrix_logger* logger, int max_bytes, int number_of_files) {
    if (max_bytes > 0) {
        callLogger(logger, [=](auto& self) {
            self.setRotation({number_of_files, static_cast<std::size_t>(max_bytes)});
        });
    }
}

void lumetrix_set_rotation_with_date(lumetrix_logger* logger, int number_of_files) {
    callLogger(logger, [=](auto& self) { self.setRotation({number_of_files, std::nullopt}); });
}

void lumetrix_sync(lumetrix_logger* logger) {
    callLogger(logger, [](auto& self) { self.sync(); });
}

void lumetrix_output_all_logs(lumetrix_logger* logger) {
    callLogger(logger, [](auto& self) { self.outputAll(); });
}
