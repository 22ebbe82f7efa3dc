#pragma once

#include "http/bytes.h"
#include "http/header_map.h"
#include "http/method.h"
#include "http/version.h"

#include <string>

namespace quorin::http {

namespace parser {

struct RequestLine {
    Method method = Method::Unknown;
    std::string target; // exactly as received: neither decoded nor normalised
    Version version = Version::Unknown;

    bool operator==(const RequestLine&) const = default;
};

} // namespace parser

struct Request {
    parser::RequestLine line;
    HeaderMap headers;
    Bytes body;

    bool operator==(const Request&) const = default;
};

} // namespace quorin::http
