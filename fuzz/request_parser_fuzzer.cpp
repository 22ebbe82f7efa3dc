// Parses arbitrary bytes as an HTTP request.
//   - The only error is kMalformed, and each token is a view of the input up to its delimiter.
//   - A parsed request, serialized again, parses as the same request.
//   - Headers and body of a request survive being serialized as a response.

#include "http/request_parser.h"
#include "http/response.h"
#include "require.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace quorin::http;

void checkTokens(std::string_view input) {
    using namespace std::string_view_literals;
    for (const std::string_view delimiter : {" "sv, ":"sv, "\r\n"sv}) {
        std::size_t position = 0;
        for (;;) {
            const std::size_t before = position;
            const auto token = parser::readUntil(position, input, delimiter);
            if (token.isError()) {
                require(token.error().code == quorin::Error::kMalformed,
                        "kMalformed is the only error");
                require(position == before, "a failure leaves the position unchanged");
                const auto rest = input.substr(before);
                const std::size_t found = rest.find(delimiter);
                require(found == std::string_view::npos || found > rest.find("\r\n"),
                        "readUntil() fails only without a token");
                break;
            }
            require(token.value().data() == input.data() + before,
                    "the token is a view of the input");
            require(position == before + token.value().size() + delimiter.size(),
                    "the position is after the delimiter");
            require(input.substr(position - delimiter.size(), delimiter.size()) == delimiter,
                    "the delimiter follows the token");
            require(token.value().find(delimiter) == std::string_view::npos,
                    "the token ends at the first delimiter");
            require(token.value().find("\r\n") == std::string_view::npos,
                    "the token is within one line");
        }
    }
}

std::string serialized(const Request& request) {
    std::string text(methodName(request.line.method));
    text.append(" ").append(request.line.target).append(" ");
    text.append(versionName(request.line.version)).append("\r\n");
    for (const auto& [name, value] : request.headers.entries()) {
        text.append(name).append(":\t").append(value).append(" \r\n");
    }
    return text.append("\r\n").append(asText(request.body));
}

void checkRoundTrip(const Request& request) {
    Request parsed;
    require(parser::parse(parsed, serialized(request)), "a serialized request is well-formed");
    require(parsed == request, "a serialized request parses as the same request");
}

void checkResponse(const Request& request) {
    Response response;
    response.headers = request.headers;
    response.appendBody(asText(request.body));
    const auto bytes = response.serialize();

    // The status line "HTTP/1.1 200 OK" parses as a request line because it has three words, too.
    Request parsed;
    require(parser::parse(parsed, asText(bytes)), "a serialized response is well-formed");
    require(parsed.headers == request.headers, "the headers are the same");
    require(parsed.body == request.body, "the body is the same");

    std::vector<std::uint8_t> copy(response.serializedSize());
    response.serializeTo(reinterpret_cast<char*>(copy.data()));
    require(copy == bytes, "serialize() and serializeTo() agree");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    checkTokens(input);
    Request request;
    if (parser::parse(request, input)) {
        require(asText(request.body).size() <= input.size() &&
                    input.ends_with(asText(request.body)),
                "the body is the end of the input");
        checkRoundTrip(request);
        checkResponse(request);
    }
    return 0;
}
