// The request parser on arbitrary bytes. Whatever they are,
//   - no error escapes, and each token lies in the input, right before its delimiter;
//   - a request that was read and is written down again is read as the same request;
//   - the headers and the body of a request, written as a response, come back unchanged.

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
                require(token.error().code == quorin::Error::kMalformed, "the one error code");
                require(position == before, "a failure leaves the position alone");
                const auto rest = input.substr(before);
                const std::size_t found = rest.find(delimiter);
                require(found == std::string_view::npos || found > rest.find("\r\n"),
                        "there was no token");
                break;
            }
            require(token.value().data() == input.data() + before, "the token is in the input");
            require(position == before + token.value().size() + delimiter.size(), "passed over");
            require(input.substr(position - delimiter.size(), delimiter.size()) == delimiter,
                    "the delimiter ends the token");
            require(token.value().find(delimiter) == std::string_view::npos, "the first delimiter");
            require(token.value().find("\r\n") == std::string_view::npos, "within one line");
        }
    }
}

std::string written(const Request& request) {
    std::string text(methodName(request.line.method));
    text.append(" ").append(request.line.target).append(" ");
    text.append(versionName(request.line.version)).append("\r\n");
    for (const auto& [name, value] : request.headers.entries()) {
        text.append(name).append(":\t").append(value).append(" \r\n");
    }
    return text.append("\r\n").append(asText(request.body));
}

void checkRoundTrip(const Request& request) {
    Request again;
    require(parser::parse(again, written(request)), "a request written down is well-formed");
    require(again == request, "a request survives being written down");
}

void checkResponse(const Request& request) {
    Response response;
    response.headers = request.headers;
    response.appendBody(asText(request.body));
    const auto bytes = response.serialize();

    // "HTTP/1.1 200 OK" has the three words of a request line.
    Request read;
    require(parser::parse(read, asText(bytes)), "a response has lines and headers");
    require(read.headers == request.headers, "headers survive");
    require(read.body == request.body, "the body survives");

    std::vector<std::uint8_t> copy(response.serializedSize());
    response.serializeTo(reinterpret_cast<char*>(copy.data()));
    require(copy == bytes, "both ways of serializing agree");
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
