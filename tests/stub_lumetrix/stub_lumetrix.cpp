// A logging library that writes every call into the file that QUORIN_STUB_LOG names, a line a
// call: the function and its arguments, joined by tabs; tabs, line feeds and back-slashes inside
// an argument are escaped with a back-slash. Without the variable the calls do nothing.
//
// QUORIN_STUB_LACKS_LOG and QUORIN_STUB_LACKS_SET_UP leave functions out, for those who want to
// see what becomes of a library that has not all of them.

#include <QtGlobal>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>

namespace {

const char* const kHandle = "the stub's logger";

std::string escaped(const char* text) {
    std::string result;
    for (; *text != '\0'; ++text) {
        switch (*text) {
        case '\t':
            result += "\\t";
            break;
        case '\n':
            result += "\\n";
            break;
        case '\\':
            result += "\\\\";
            break;
        default:
            result += *text;
        }
    }
    return result;
}

std::string field(void* handle) {
    return handle == kHandle ? "handle" : handle == nullptr ? "null" : "stranger";
}

std::string field(const char* text) {
    return escaped(text);
}

std::string field(std::int32_t number) {
    return std::to_string(number);
}

template<typename... Arguments>
void record(const char* function, Arguments... arguments) {
    static std::mutex mutex;
    std::string line = function;
    ((line += '\t' + field(arguments)), ...);
    line += '\n';
    const char* const path = std::getenv("QUORIN_STUB_LOG");
    if (path == nullptr) {
        return;
    }
    const std::lock_guard lock(mutex);
    std::FILE* const file = std::fopen(path, "ab");
    if (file != nullptr) {
        std::fwrite(line.data(), 1, line.size(), file);
        std::fclose(file);
    }
}

} // namespace

extern "C" {

Q_DECL_EXPORT void* lumetrix_get_logger() {
    record("get_logger");
    return const_cast<char*>(kHandle);
}

Q_DECL_EXPORT void lumetrix_create() {
    record("create");
}

Q_DECL_EXPORT void lumetrix_release(void* handle) {
    record("release", handle);
}

#ifndef QUORIN_STUB_LACKS_LOG
Q_DECL_EXPORT void lumetrix_log(void* handle, const char* name, std::int32_t level,
                                const char* message) {
    record("log", handle, name, level, message);
}
#endif

#ifndef QUORIN_STUB_LACKS_SET_UP
Q_DECL_EXPORT void lumetrix_set_output_dir(void* handle, const char* directory,
                                           const char* baseName) {
    record("set_output_dir", handle, directory, baseName);
}

Q_DECL_EXPORT void lumetrix_set_output_level(void* handle, std::int32_t level) {
    record("set_output_level", handle, level);
}

Q_DECL_EXPORT void lumetrix_set_pool_size(void* handle, std::int32_t size) {
    record("set_pool_size", handle, size);
}

Q_DECL_EXPORT void lumetrix_set_rotation_with_date(void* handle, std::int32_t files) {
    record("set_rotation_with_date", handle, files);
}
#endif

Q_DECL_EXPORT void lumetrix_set_enabled_console_out() {
    record("set_enabled_console_out");
}

Q_DECL_EXPORT void lumetrix_set_rotation() {
    record("set_rotation");
}

Q_DECL_EXPORT void lumetrix_sync() {
    record("sync");
}

Q_DECL_EXPORT void lumetrix_output_all_logs() {
    record("output_all_logs");
}

} // extern "C"
