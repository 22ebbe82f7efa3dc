#include "http/status.h"

#include <algorithm>
#include <array>

namespace quorin::http {
namespace {

struct StatusEntry {
    Status status;
    std::string_view phrase;
};

constexpr std::array kPhrases = {
    StatusEntry{Status::Continue, "Continue"},
    StatusEntry{Status::SwitchingProtocols, "Switching Protocols"},
    StatusEntry{Status::Ok, "OK"},
    StatusEntry{Status::Created, "Created"},
    StatusEntry{Status::Accepted, "Accepted"},
    StatusEntry{Status::NonAuthoritativeInformation, "Non-Authoritative Information"},
    StatusEntry{Status::NoContent, "No Content"},
    StatusEntry{Status::ResetContent, "Reset Content"},
    StatusEntry{Status::PartialContent, "Partial Content"},
    StatusEntry{Status::MultipleChoices, "Multiple Choices"},
    StatusEntry{Status::MovedPermanently, "Moved Permanently"},
    StatusEntry{Status::Found, "Found"},
    StatusEntry{Status::SeeOther, "See Other"},
    StatusEntry{Status::NotModified, "Not Modified"},
    StatusEntry{Status::UseProxy, "Use Proxy"},
    StatusEntry{Status::TemporaryRedirect, "Temporary Redirect"},
    StatusEntry{Status::BadRequest, "Bad Request"},
    StatusEntry{Status::Unauthorized, "Unauthorized"},
    StatusEntry{Status::PaymentRequired, "Payment Required"},
    StatusEntry{Status::Forbidden, "Forbidden"},
    StatusEntry{Status::NotFound, "Not Found"},
    StatusEntry{Status::MethodNotAllowed, "Method Not Allowed"},
    StatusEntry{Status::NotAcceptable, "Not Acceptable"},
    StatusEntry{Status::ProxyAuthenticationRequired, "Proxy Authentication Required"},
    StatusEntry{Status::RequestTimeout, "Request Timeout"},
    StatusEntry{Status::Conflict, "Conflict"},
    StatusEntry{Status::Gone, "Gone"},
    StatusEntry{Status::LengthRequired, "Length Required"},
    StatusEntry{Status::PreconditionFailed, "Precondition Failed"},
    StatusEntry{Status::PayloadTooLarge, "Payload Too Large"},
    StatusEntry{Status::UriTooLong, "URI Too Long"},
    StatusEntry{Status::UnsupportedMediaType, "Unsupported Media Type"},
    StatusEntry{Status::RangeNotSatisfiable, "Range Not Satisfiable"},
    StatusEntry{Status::ExpectationFailed, "Expectation Failed"},
    StatusEntry{Status::UpgradeRequired, "Upgrade Required"},
    StatusEntry{Status::InternalServerError, "Internal Server Error"},
    StatusEntry{Status::NotImplemented, "Not Implemented"},
    StatusEntry{Status::BadGateway, "Bad Gateway"},
    StatusEntry{Status::ServiceUnavailable, "Service Unavailable"},
    StatusEntry{Status::GatewayTimeout, "Gateway Timeout"},
    StatusEntry{Status::HttpVersionNotSupported, "HTTP Version Not Supported"},
};

static_assert(std::ranges::is_sorted(kPhrases, {}, &StatusEntry::status),
              "reasonPhrase() searches by bisection");

} // namespace

std::string_view reasonPhrase(Status status) noexcept {
    const auto entry = std::ranges::lower_bound(kPhrases, status, {}, &StatusEntry::status);
    return entry != kPhrases.end() && entry->status == status ? entry->phrase : std::string_view();
}

} // namespace quorin::http
