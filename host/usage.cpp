#include "usage.h"

#include <cstdio>

namespace quorin {

int reportUsageError(const std::string& message) {
    std::fprintf(stderr, "quorin-gateway: %s; try 'quorin-gateway --help'\n", message.c_str());
    return kUsageError;
}

std::string groupError(const std::string& group) {
    if (group == "primary" || group == "secondary") {
        return {};
    }
    return "unknown group '" + group + "': must be 'primary' or 'secondary'";
}

} // namespace quorin
