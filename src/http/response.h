#pragma once

#include "http/bytes.h"
#include "http/header_map.h"
#include "http/version.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quorin::http {

// A reply, written as it stands: whoever wants a "Content-Length" or a "Content-Type" sets it.
struct Response {
    Response() = default; // 200 OK
    // With the standard reason phrase, which is empty for a status that has none.
    explicit Response(std::int32_t statusCode);
    Response(std::int32_t statusCode, std::string reasonText);

    void appendBody(std::string_view bytes);

    // The bytes to send.
    std::vector<std::uint8_t> serialize() const;

    // The same into memory of the caller's, for one who holds bytes in a container of another
    // kind: room for serializedSize() bytes, all of which are written.
    std::size_t serializedSize() const;
    void serializeTo(char* out) const;

    Version version = Version::Http11;
    std::int32_t status = 200;
    std::string reason = "OK";
    HeaderMap headers;
    Bytes body;
};

} // namespace quorin::http
