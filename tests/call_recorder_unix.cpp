// A library to preload into a process. It appends a line to the file QUORIN_CALL_RECORD for each of
// these system calls, before the call is made:
//
//     write PATH              to a file with a path
//     fsync PATH              or fdatasync
//     rename FROM TO
//     send STATUS-LINE        or write, of a plain HTTP reply
//
// A call whose line is the content of the file QUORIN_FAILING_CALL fails with EIO instead.

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

// The definition that would be called without this library.
template<typename Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The content of a file of at most PATH_MAX bytes; empty if there is no file.
std::string contentOf(const char* path) {
    const int file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        return {};
    }
    std::array<char, PATH_MAX> content{};
    const auto size = read(file, content.data(), content.size());
    close(file);
    return {content.data(), static_cast<std::size_t>(size > 0 ? size : 0)};
}

// Returns false, with errno set, if the call must fail.
bool record(const std::string& call) {
    const char* const path = std::getenv("QUORIN_CALL_RECORD");
    if (path == nullptr) {
        return true;
    }
    const int previousError = errno;
    const int file = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const std::string line = call + '\n';
    const auto written =
        next<ssize_t(int, const void*, size_t)>("write")(file, line.data(), line.size());
    close(file);
    if (written != static_cast<ssize_t>(line.size())) {
        std::abort(); // an incomplete record proves nothing
    }
    const char* const failing = std::getenv("QUORIN_FAILING_CALL");
    const bool mustFail = failing != nullptr && call == contentOf(failing);
    errno = mustFail ? EIO : previousError;
    return !mustFail;
}

// The path of an open file; empty if it has none, as a socket.
std::string pathOf(int descriptor) {
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    std::array<char, PATH_MAX> path{};
    const auto size = readlink(link.c_str(), path.data(), path.size());
    return size > 0 && path[0] == '/' ? std::string(path.data(), static_cast<std::size_t>(size))
                                      : std::string();
}

bool recordFileCall(const char* name, int descriptor) {
    const std::string path = pathOf(descriptor);
    return path.empty() || record(std::string(name) + ' ' + path);
}

bool recordReply(const void* data, std::size_t size) {
    const std::string_view text(static_cast<const char*>(data), size);
    return text.substr(0, 5) != "HTTP/" ||
           record("send " + std::string(text.substr(0, text.find('\r'))));
}

} // namespace

#pragma GCC visibility push(default)
extern "C" {

ssize_t write(int descriptor, const void* data, size_t size) {
    return recordReply(data, size) && recordFileCall("write", descriptor)
               ? next<ssize_t(int, const void*, size_t)>("write")(descriptor, data, size)
               : -1;
}

int fsync(int descriptor) {
    return recordFileCall("fsync", descriptor) ? next<int(int)>("fsync")(descriptor) : -1;
}

int fdatasync(int descriptor) {
    return recordFileCall("fsync", descriptor) ? next<int(int)>("fdatasync")(descriptor) : -1;
}

int rename(const char* from, const char* to) noexcept {
    return record(std::string("rename ") + from + ' ' + to)
               ? next<int(const char*, const char*)>("rename")(from, to)
               : -1;
}

ssize_t send(int descriptor, const void* data, size_t size, int flags) {
    return recordReply(data, size)
               ? next<ssize_t(int, const void*, size_t, int)>("send")(descriptor, data, size, flags)
               : -1;
}

} // extern "C"
#pragma GCC visibility pop
