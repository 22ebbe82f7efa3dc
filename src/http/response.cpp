#include "http/response.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

namespace quorin::http {
namespace {

// Passes the pieces of the message to sink in the order in which they are sent.
template<typename Sink>
void forEachPiece(const Response& response, Sink sink) {
    constexpr std::string_view kSpace = " ";
    constexpr std::string_view kLineEnd = "\r\n";
    constexpr std::size_t kStatusSize = std::numeric_limits<std::int32_t>::digits10 + 2;

    std::array<char, kStatusSize> status; // ten digits and a sign
    const auto end = std::to_chars(status.data(), status.data() + status.size(),
                                   static_cast<std::int32_t>(response.status))
                         .ptr;

    sink(versionName(response.version));
    sink(kSpace);
    sink(std::string_view(status.data(), static_cast<std::size_t>(end - status.data())));
    sink(kSpace);
    sink(std::string_view(response.reason));
    sink(kLineEnd);
    for (const auto& [name, value] : response.headers.entries()) {
        sink(std::string_view(name));
        sink(std::string_view(": "));
        sink(std::string_view(value));
        sink(kLineEnd);
    }
    sink(kLineEnd);
    sink(asText(response.body));
}

} // namespace

Response::Response(Status responseStatus)
    : Response(responseStatus, std::string(reasonPhrase(responseStatus))) {}

Response::Response(Status responseStatus, std::string reasonText)
    : status(responseStatus), reason(std::move(reasonText)) {}

Response::Response(std::int32_t statusCode) : Response(static_cast<Status>(statusCode)) {}

Response::Response(std::int32_t statusCode, std::string reasonText)
    : Response(static_cast<Status>(statusCode), std::move(reasonText)) {}

void Response::appendBody(std::string_view bytes) {
    const auto range = asBytes(bytes);
    body.insert(body.end(), range.begin(), range.end());
}

std::vector<std::uint8_t> Response::serialize() const {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(serializedSize());
    forEachPiece(*this, [&bytes](std::string_view piece) {
        const auto range = asBytes(piece);
        bytes.insert(bytes.end(), range.begin(), range.end());
    });
    return bytes;
}

std::size_t Response::serializedSize() const {
    std::size_t size = 0;
    forEachPiece(*this, [&size](std::string_view piece) { size += piece.size(); });
    return size;
}

void Response::serializeTo(char* out) const {
    forEachPiece(*this, [&out](std::string_view piece) {
        out = std::copy(piece.begin(), piece.end(), out);
    });
}

} // namespace quorin::http
