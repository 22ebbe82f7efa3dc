#include "http/version.h"

#include "http/ascii.h"

#include <array>

namespace quorin::http {
namespace {

struct VersionEntry {
    Version version;
    std::string_view name;
};

constexpr std::array kVersions = {
    VersionEntry{Version::Unknown, ""},
    VersionEntry{Version::Http09, "HTTP/0.9"},
    VersionEntry{Version::Http10, "HTTP/1.0"},
    VersionEntry{Version::Http11, "HTTP/1.1"},
};

} // namespace

Version versionFromName(std::string_view name) noexcept {
    for (const VersionEntry& entry : kVersions) {
        if (equalsIgnoreCase(name, entry.name)) {
            return entry.version;
        }
    }
    return Version::Unknown;
}

std::string_view versionName(Version version) noexcept {
    for (const VersionEntry& entry : kVersions) {
        if (entry.version == version) {
            return entry.name;
        }
    }
    return kVersions.front().name;
}

} // namespace quorin::http
