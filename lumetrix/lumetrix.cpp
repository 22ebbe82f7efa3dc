#include "lumetrix.h"

#include "logger.h"
#include "standard_error.h"

#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

struct lumetrix_logger final : lumetrix2::Logger {};

namespace {

// The logger is never destroyed: threads of the host may still log while the process exits, and
// one that was not released has a thread that uses it. A released logger owns nothing.
union Process {
    lumetrix_logger logger;

    Process() : logger() {}
    ~Process() {}
};

Process process;

std::filesystem::path toPath(std::string_view utf8) {
    return std::u8string(utf8.begin(), utf8.end());
}

template<typename Call>
void guarded(const lumetrix_logger* logger, Call&& call) noexcept {
    if (logger != &process.logger) {
        return;
    }
    try {
        call(process.logger);
    } catch (const std::exception& error) {
        lumetrix2::tellOnStandardError(error.what());
    }
}

} // namespace

lumetrix_logger* lumetrix_get_logger() {
    try {
        process.logger.start();
        return &process.logger;
    } catch (const std::exception& error) {
        lumetrix2::tellOnStandardError(error.what());
        return nullptr;
    }
}

lumetrix_logger* lumetrix_create() {
    return lumetrix_get_logger();
}

void lumetrix_release(lumetrix_logger* logger) {
    guarded(logger, [](auto& known) { known.release(); });
}

void lumetrix_log(lumetrix_logger* logger, const char* name, int level, const char* message) {
    // The level first: it decides most often.
    if (process.logger.isLogged(level) && name && message) {
        guarded(logger, [=](auto& known) { known.log(level, message); });
    }
}

void lumetrix_set_output_dir(lumetrix_logger* logger, const char* directory,
                             const char* base_name) {
    if (directory && base_name && *base_name) {
        guarded(logger, [=](auto& known) { known.setFile(toPath(directory), toPath(base_name)); });
    }
}

void lumetrix_set_output_level(lumetrix_logger* logger, int level) {
    guarded(logger, [=](auto& known) { known.setLevel(level); });
}

void lumetrix_set_enabled_console_out(lumetrix_logger* logger, int enabled) {
    guarded(logger, [=](auto& known) { known.setConsole(enabled != 0); });
}

void lumetrix_set_pool_size(lumetrix_logger* logger, int lines) {
    guarded(logger, [=](auto& known) { known.setQueueLength(lines); });
}

void lumetrix_set_rotation(lumetrix_logger* logger, int max_bytes, int number_of_files) {
    if (max_bytes > 0) {
        guarded(logger, [=](auto& known) {
            known.setRotation({number_of_files, static_cast<std::size_t>(max_bytes)});
        });
    }
}

void lumetrix_set_rotation_with_date(lumetrix_logger* logger, int number_of_files) {
    guarded(logger, [=](auto& known) { known.setRotation({number_of_files, std::nullopt}); });
}

void lumetrix_sync(lumetrix_logger* logger) {
    guarded(logger, [](auto& known) { known.sync(); });
}

void lumetrix_output_all_logs(lumetrix_logger* logger) {
    guarded(logger, [](auto& known) { known.outputAll(); });
}
