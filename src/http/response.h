#pragma once

#include "http/bytes.h"
#include "http/header_map.h"
#include "http/status.h"
#include "http/version.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorin::http {

// A response. Serialised as is: no headers are added, not even "Content-Length".
struct Response {
    Response() = default; // 200 OK
    // Takes the standard reason phrase, which is empty if the status has none.
    explicit Response(Status responseStatus);
    Response(Status responseStatus, std::string reasonText);
    explicit Response(std::int32_t statusCode);
    Response(std::int32_t statusCode, std::string reasonText);

    void appendBody(std::string_view bytes);

    // Returns the bytes to send.
    std::vector<std::uint8_t> serialize() const;

    // Serialises into the caller's memory: writes exactly serializedSize() bytes to out.
    std::size_t serializedSize() const;
    void serializeTo(char* out) const;

    Version version = Version::Http11;
    Status status = Status::Ok;
    std::string reason = "OK";
    HeaderMap headers;
    Bytes body;
};

} // namespace quorin::http
