#pragma once

#include "http/bytes.h"
#include "http/error.h"
#include "http/header_map.h"
#include "http/request.h"
#include "http/result.h"

#include <cstddef>
#include <string_view>

// A strict parser for one complete request in one buffer. Stateless and thread-safe. Runs in time
// linear in the size of the input and copies only what the request stores.
namespace quorin::http::parser {

// Parses input into request. Returns false if input is not a well-formed request; request then
// holds the parts read before the error. Never throws quorin::Error; may throw std::bad_alloc or
// std::length_error.
//
// The body is everything after the empty line; "Content-Length" is not interpreted. If a header
// name occurs more than once, the last value is kept.
bool parse(Request& request, std::string_view input);

// The steps of parse(). Each starts at position, an index not greater than the size of input, and
// advances it past what it has read. On failure each returns Error::kMalformed without a message.

// Returns the bytes before the delimiter as a view of input and skips the delimiter. An empty
// delimiter means CR LF. Fails, without moving position, if the line or the input ends before the
// delimiter.
Result<std::string_view, Error> readUntil(std::size_t& position, std::string_view input,
                                          std::string_view delimiter);

// Reads the request line. Unknown methods and versions are not errors.
Result<RequestLine, Error> readRequestLine(std::size_t& position, std::string_view input);

// Reads the header lines and the empty line after them.
Result<HeaderMap::Entries, Error> readHeaders(std::size_t& position, std::string_view input);

// Reads the rest of input. Never fails.
Result<Bytes, Error> readBody(std::size_t& position, std::string_view input);

} // namespace quorin::http::parser
