#include "log/lumetrix_logger.h"

#include <utility>

namespace lumetrix {

Logger::Logger(std::string name, const char* libraryName)
    : name_(std::move(name)), module_(quorin::platform::SharedLibrary::load(libraryName)) {
    if (!module_) {
        return;
    }
    const auto find = [this]<typename Function>(Function*& function, const char* functionName) {
        function = module_.function<Function>(functionName);
    };
    find(functions_.lumetrix_get_logger, "lumetrix_get_logger");
    find(functions_.lumetrix_create, "lumetrix_create");
    find(functions_.lumetrix_release, "lumetrix_release");
    find(functions_.lumetrix_log, "lumetrix_log");
    find(functions_.lumetrix_set_output_dir, "lumetrix_set_output_dir");
    find(functions_.lumetrix_set_output_level, "lumetrix_set_output_level");
    find(functions_.lumetrix_set_enabled_console_out, "lumetrix_set_enabled_console_out");
    find(functions_.lumetrix_set_pool_size, "lumetrix_set_pool_size");
    find(functions_.lumetrix_set_rotation, "lumetrix_set_rotation");
    find(functions_.lumetrix_set_rotation_with_date, "lumetrix_set_rotation_with_date");
    find(functions_.lumetrix_sync, "lumetrix_sync");
    find(functions_.lumetrix_output_all_logs, "lumetrix_output_all_logs");
    if (functions_.lumetrix_get_logger != nullptr) {
        handle_ = functions_.lumetrix_get_logger();
    }
}

Logger::~Logger() = default;

void Logger::log(Level level, const char* message) const {
    if (functions_.lumetrix_log != nullptr) {
        functions_.lumetrix_log(handle_, name_.c_str(), static_cast<std::int32_t>(level), message);
    }
}

void Logger::release() const {
    if (functions_.lumetrix_release != nullptr) {
        functions_.lumetrix_release(handle_);
    }
}

void Logger::setOutputDir(const char* directory, const char* baseName) const {
    if (functions_.lumetrix_set_output_dir != nullptr) {
        functions_.lumetrix_set_output_dir(handle_, directory, baseName);
    }
}

void Logger::setOutputLevel(Level level) const {
    if (functions_.lumetrix_set_output_level != nullptr) {
        functions_.lumetrix_set_output_level(handle_, static_cast<std::int32_t>(level));
    }
}

void Logger::setPoolSize(std::int32_t size) const {
    if (functions_.lumetrix_set_pool_size != nullptr) {
        functions_.lumetrix_set_pool_size(handle_, size);
    }
}

void Logger::setRotationWithDate(std::int32_t files) const {
    if (functions_.lumetrix_set_rotation_with_date != nullptr) {
        functions_.lumetrix_set_rotation_with_date(handle_, files);
    }
}

} // namespace lumetrix
