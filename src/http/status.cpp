#include "http/status.h"

#include <algorithm>
#include <array>

namespace quorin::http {
namespace {

struct Entry {
    Status status;
    std::string_view phrase;
};

constexpr std::array kPhrases = {
    Entry{Status::Continue, "Continue"},
    Entry{Status::SwitchingProtocols, "Switching Protocols"},
    Entry{Status::Ok, "OK"},
    Entry{Status::Created, "Created"},
    Entry{Status::Accepted, "Accepted"},
    Entry{Status::NonAuthoritativeInformation, "Non-Authoritative Information"},
    Entry{Status::NoContent, "No Content"},
    Entry{Status::ResetContent, "Reset Content"},
    Entry{Status::PartialContent, "Partial Content"},
    Entry{Status::MultipleChoices, "Multiple Choices"},
    Entry{Status::MovedPermanently, "Moved Permanently"},
    Entry{Status::Found, "Found"},
    Entry{Status::SeeOther, "See Other"},
    Entry{Status::NotModified, "Not Modified"},
    Entry{Status::UseProxy, "Use Proxy"},
    Entry{Status::TemporaryRedirect, "Temporary Redirect"},
    Entry{Status::BadRequest, "Bad Request"},
    Entry{Status::Unauthorized, "Unauthorized"},
    Entry{Status::PaymentRequired, "Payment Required"},
    Entry{Status::Forbidden, "Forbidden"},
    Entry{Status::NotFound, "Not Found"},
    Entry{Status::MethodNotAllowed, "Method Not Allowed"},
    Entry{Status::NotAcceptable, "Not Acceptable"},
    Entry{Status::ProxyAuthenticationRequired, "Proxy Authentication Required"},
    Entry{Status::RequestTimeout, "Request Timeout"},
    Entry{Status::Conflict, "Conflict"},
    Entry{Status::Gone, "Gone"},
    Entry{Status::LengthRequired, "Length Required"},
    Entry{Status::PreconditionFailed, "Precondition Failed"},
    Entry{Status::PayloadTooLarge, "Payload Too Large"},
    Entry{Status::UriTooLong, "URI Too Long"},
    Entry{Status::UnsupportedMediaType, "Unsupported Media Type"},
    Entry{Status::RangeNotSatisfiable, "Range Not Satisfiable"},
    Entry{Status::ExpectationFailed, "Expectation Failed"},
    Entry{Status::UpgradeRequired, "Upgrade Required"},
    Entry{Status::InternalServerError, "Internal Server Error"},
    Entry{Status::NotImplemented, "Not Implemented"},
    Entry{Status::BadGateway, "Bad Gateway"},
    Entry{Status::ServiceUnavailable, "Service Unavailable"},
    Entry{Status::GatewayTimeout, "Gateway Timeout"},
    Entry{Status::HttpVersionNotSupported, "HTTP Version Not Supported"},
};

static_assert(std::ranges::is_sorted(kPhrases, {}, &Entry::status),
              "reasonPhrase() searches by bisection");

} // namespace

std::string_view reasonPhrase(Status status) noexcept {
    const auto entry = std::ranges::lower_bound(kPhrases, status, {}, &Entry::status);
    return entry != kPhrases.end() && entry->status == status ? entry->phrase : std::string_view();
}

} // namespace quorin::http
