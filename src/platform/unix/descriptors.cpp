#include "platform/descriptors.h"

#include "platform/socket_descriptor.h"

#include <fcntl.h>
#include <sys/resource.h>

namespace platform {

std::optional<qintptr> descriptorLimit() {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) {
        return std::nullopt;
    }
    return static_cast<qintptr>(limit.rlim_cur);
}

std::optional<qintptr> nextDescriptor() {
    const SocketDescriptor probe(open("/dev/null", O_RDONLY | O_CLOEXEC));
    return probe.get() < 0 ? std::nullopt : std::optional(probe.get());
}

void raiseDescriptorLimit() noexcept {
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) == 0) {
        limit.rlim_cur = limit.rlim_max;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
}

} // namespace platform
