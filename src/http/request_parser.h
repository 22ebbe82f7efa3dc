#pragma once

#include "http/bytes.h"
#include "http/error.h"
#include "http/header_map.h"
#include "http/request.h"
#include "http/result.h"

#include <cstddef>
#include <string_view>

// A strict one-shot parser: one buffer is one request, and no state outlives a call. Tokens are
// views of the input; only what the request keeps is copied, once. Time is linear in the input.
namespace quorin::http::parser {

// Fills request from input; false when input is not a well-formed request, in which case request
// is left with the pieces read before the flaw. Throws what the standard library throws for lack
// of memory, never quorin::Error.
//
// The body is whatever follows the empty line; "Content-Length" is a header like any other. Of a
// name that occurs twice the later value is kept.
bool parse(Request& request, std::string_view input);

// The steps of parse(). Each reads from position, an index into input or its size, and moves it
// past what it has read; each failure is Error::kMalformed without a message.

// The bytes up to the delimiter, which is passed over; an empty delimiter stands for CR LF. Fails,
// and leaves position alone, when the line or the input ends before a delimiter.
Result<std::string_view, Error> readUntil(std::size_t& position, std::string_view input,
                                          std::string_view delimiter);

// An unknown method or version is no failure here.
Result<RequestLine, Error> readRequestLine(std::size_t& position, std::string_view input);

// The header lines and the empty line that ends them.
Result<HeaderMap::Entries, Error> readHeaders(std::size_t& position, std::string_view input);

// Everything that is left; never fails.
Result<Bytes, Error> readBody(std::size_t& position, std::string_view input);

} // namespace quorin::http::parser
