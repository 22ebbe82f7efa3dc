// A logging library that appends every call to the file named by the environment variable
// QUORIN_STUB_LOG, one line per call: the function name and the arguments, separated by tabs. Tabs,
// line feeds and backslashes in an argument are escaped with a backslash. If the variable is not
// set, nothing is recorded. lumetrix_log() throws std::bad_alloc if the message contains the text
// in the environment variable QUORIN_STUB_THROWS. It records a message that contains the text in
// QUORIN_STUB_BLOCKS, but does not return.
//
// QUORIN_STUB_WITHOUT_LOG and QUORIN_STUB_WITHOUT_SET_UP omit functions, to test against an
// incomplete library.

#include <QtGlobal>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>
#include <string>
#include <thread>

namespace {

const char* const kHandle = "the stub's logger";

// Returns true if `message` contains the text in the environment variable `name`.
[[maybe_unused]] bool isSelectedBy(const char* name, const char* message) {
    const char* const text = std::getenv(name);
    return text != nullptr && std::strstr(message, text) != nullptr;
}

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
    return handle == kHandle ? "handle" : handle == nullptr ? "null" : "unknown";
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

#ifndef QUORIN_STUB_WITHOUT_LOG
Q_DECL_EXPORT void lumetrix_log(void* handle, const char* name, std::int32_t level,
                                const char* message) {
    if (isSelectedBy("QUORIN_STUB_THROWS", message)) {
        throw std::bad_alloc();
    }
    record("log", handle, name, level, message);
    while (isSelectedBy("QUORIN_STUB_BLOCKS", message)) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
}
#endif

#ifndef QUORIN_STUB_WITHOUT_SET_UP
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
