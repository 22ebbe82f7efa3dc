#include "platform/descriptors.h"

#include "platform/socket_descriptor.h"

#include <sys/eventfd.h>
#include <sys/resource.h>

#include <filesystem>
#include <system_error>

namespace quorin::platform {

std::optional<qintptr> descriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return std::nullopt;
    }
    return static_cast<qintptr>(limit.rlim_cur);
}

std::optional<qintptr> openDescriptors() {
    qintptr count = 0;
    std::error_code error;
    std::filesystem::directory_iterator entry("/proc/self/fd", error);
    while (!error && entry != std::filesystem::directory_iterator()) {
        ++count;
        entry.increment(error);
    }
    if (error == std::errc::too_many_files_open ||
        error == std::errc::too_many_files_open_in_system) {
        return std::nullopt;
    }
    return count > 0 ? count - 1 : 0; // without the one that was open to count
}

// The kind of descriptor that Qt's event loop uses.
bool hasFreeDescriptor() {
    return SocketDescriptor(eventfd(0, EFD_CLOEXEC)).get() >= 0;
}

void raiseDescriptorLimit() noexcept {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace quorin::platform
