#include "http/status.h"

#include <algorithm>
#include <array>

namespace quorin::http {
namespace {

struct Entry {
    std::int32_t status;
    std::string_view phrase;
};

constexpr std::array kPhrases = {
    Entry{100, "Continue"},
    Entry{101, "Switching Protocols"},
    Entry{200, "OK"},
    Entry{201, "Created"},
    Entry{202, "Accepted"},
    Entry{203, "Non-Authoritative Information"},
    Entry{204, "No Content"},
    Entry{205, "Reset Content"},
    Entry{206, "Partial Content"},
    Entry{300, "Multiple Choices"},
    Entry{301, "Moved Permanently"},
    Entry{302, "Found"},
    Entry{303, "See Other"},
    Entry{304, "Not Modified"},
    Entry{305, "Use Proxy"},
    Entry{307, "Temporary Redirect"},
    Entry{400, "Bad Request"},
    Entry{401, "Unauthorized"},
    Entry{402, "Payment Required"},
    Entry{403, "Forbidden"},
    Entry{404, "Not Found"},
    Entry{405, "Method Not Allowed"},
    Entry{406, "Not Acceptable"},
    Entry{407, "Proxy Authentication Required"},
    Entry{408, "Request Timeout"},
    Entry{409, "Conflict"},
    Entry{410, "Gone"},
    Entry{411, "Length Required"},
    Entry{412, "Precondition Failed"},
    Entry{413, "Payload Too Large"},
    Entry{414, "URI Too Long"},
    Entry{415, "Unsupported Media Type"},
    Entry{416, "Range Not Satisfiable"},
    Entry{417, "Expectation Failed"},
    Entry{426, "Upgrade Required"},
    Entry{500, "Internal Server Error"},
    Entry{501, "Not Implemented"},
    Entry{502, "Bad Gateway"},
    Entry{503, "Service Unavailable"},
    Entry{504, "Gateway Timeout"},
    Entry{505, "HTTP Version Not Supported"},
};

static_assert(std::ranges::is_sorted(kPhrases, {}, &Entry::status), "the look-up halves the table");

} // namespace

std::string_view reasonPhrase(std::int32_t status) noexcept {
    const auto entry = std::ranges::lower_bound(kPhrases, status, {}, &Entry::status);
    return entry != kPhrases.end() && entry->status == status ? entry->phrase : std::string_view();
}

} // namespace quorin::http
