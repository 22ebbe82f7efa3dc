#include "http/request_parser.h"

#include <utility>

namespace quorin::http::parser {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kSpace = " ";
constexpr std::string_view kColon = ":";
constexpr std::string_view kWhitespace = " \t";

Error malformed() {
    return Error(Error::kMalformed);
}

std::string_view trim(std::string_view text) {
    const std::size_t first = text.find_first_not_of(kWhitespace);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kWhitespace) - first + 1);
}

} // namespace

Result<std::string_view, Error> readUntil(std::size_t& position, std::string_view input,
                                          std::string_view delimiter) {
    if (delimiter.empty()) {
        delimiter = kLineEnd;
    }
    const std::size_t found = input.find(delimiter, position);
    if (found == std::string_view::npos) {
        return malformed();
    }
    const std::string_view token = input.substr(position, found - position);
    // Includes the byte after the token, the first of the delimiter: a line end may start before
    // the delimiter and overlap it.
    if (input.substr(position, token.size() + 1).find(kLineEnd) < token.size()) {
        return malformed();
    }
    position = found + delimiter.size();
    return token;
}

Result<RequestLine, Error> readRequestLine(std::size_t& position, std::string_view input) {
    const auto method = readUntil(position, input, kSpace);
    if (method.isError()) {
        return method.error();
    }
    const auto target = readUntil(position, input, kSpace);
    if (target.isError()) {
        return target.error();
    }
    const auto version = readUntil(position, input, kLineEnd);
    if (version.isError()) {
        return version.error();
    }
    return RequestLine{methodFromName(method.value()), std::string(target.value()),
                       versionFromName(version.value())};
}

Result<HeaderMap::Entries, Error> readHeaders(std::size_t& position, std::string_view input) {
    HeaderMap::Entries headers;
    while (!input.substr(position).starts_with(kLineEnd)) {
        const auto name = readUntil(position, input, kColon);
        if (name.isError()) {
            return name.error();
        }
        const auto value = readUntil(position, input, kLineEnd);
        if (value.isError()) {
            return value.error();
        }
        headers.insert_or_assign(std::string(trim(name.value())), trim(value.value()));
    }
    position += kLineEnd.size();
    return headers;
}

Result<Bytes, Error> readBody(std::size_t& position, std::string_view input) {
    const auto rest = asBytes(input.substr(position));
    position = input.size();
    return Bytes(rest.begin(), rest.end());
}

bool parse(Request& request, std::string_view input) {
    std::size_t position = 0;
    try {
        request.line = unwrap(readRequestLine(position, input));
        request.headers = HeaderMap(unwrap(readHeaders(position, input)));
        request.body = unwrap(readBody(position, input));
        return true;
    } catch (const Error&) {
        return false;
    }
}

} // namespace quorin::http::parser
