#include "http/version.h"

#include "http/ascii.h"

#include <array>

namespace quorin::http {
namespace {

struct Entry {
    Version version;
    std::string_view name;
};

constexpr std::array kVersions = {
    Entry{Version::Unknown, ""},
    Entry{Version::Http09, "HTTP/0.9"},
    Entry{Version::Http10, "HTTP/1.0"},
    Entry{Version::Http11, "HTTP/1.1"},
};

} // namespace

Version versionFromName(std::string_view name) noexcept {
    for (const Entry& entry : kVersions) {
        if (equalsIgnoreCase(name, entry.name)) {
            return entry.version;
        }
    }
    return Version::Unknown;
}

std::string_view versionName(Version version) noexcept {
    for (const Entry& entry : kVersions) {
        if (entry.version == version) {
            return entry.name;
        }
    }
    return kVersions.front().name;
}

} // namespace quorin::http
