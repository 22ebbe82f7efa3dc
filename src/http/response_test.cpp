#include "http/response.h"

#include "http/header_names.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

namespace quorin::http {
namespace {

using namespace std::string_view_literals;

std::string serialized(const Response& response) {
    return std::string(asText(response.serialize()));
}

TEST(Response, DefaultsToOk) {
    const Response response;

    EXPECT_EQ(response.version, Version::Http11);
    EXPECT_EQ(response.status, Status::Ok);
    EXPECT_EQ(response.reason, "OK");
    EXPECT_TRUE(response.headers.entries().empty());
    EXPECT_TRUE(response.body.empty());
    EXPECT_EQ(serialized(response), "HTTP/1.1 200 OK\r\n\r\n");
}

TEST(Response, TakesStandardPhraseOfStatus) {
    const Response response(Status::NotFound);

    EXPECT_EQ(response.version, Version::Http11);
    EXPECT_EQ(response.status, Status::NotFound);
    EXPECT_EQ(response.reason, "Not Found");
    EXPECT_EQ(serialized(response), "HTTP/1.1 404 Not Found\r\n\r\n");
}

TEST(Response, AcceptsStatusAsInteger) {
    const Response response(404);

    EXPECT_EQ(response.status, Status::NotFound);
    EXPECT_EQ(response.reason, "Not Found");
    EXPECT_EQ(Response(404, "Lost").status, Status::NotFound);
    EXPECT_EQ(Response(404, "Lost").reason, "Lost");
}

TEST(Response, WritesSpaceBeforeEmptyPhrase) {
    EXPECT_EQ(serialized(Response(306)), "HTTP/1.1 306 \r\n\r\n");
    EXPECT_EQ(serialized(Response(0)), "HTTP/1.1 0 \r\n\r\n");
}

TEST(Response, GivenReasonReplacesStandardPhrase) {
    EXPECT_EQ(serialized(Response(Status::NotFound, "Gone Fishing")),
              "HTTP/1.1 404 Gone Fishing\r\n\r\n");
    EXPECT_EQ(serialized(Response(Status::NotFound, "")), "HTTP/1.1 404 \r\n\r\n");
}

TEST(Response, WritesSignOfNegativeStatus) {
    EXPECT_EQ(serialized(Response(-1)), "HTTP/1.1 -1 \r\n\r\n");
    EXPECT_EQ(serialized(Response(std::numeric_limits<std::int32_t>::min())),
              "HTTP/1.1 -2147483648 \r\n\r\n");
}

TEST(Response, WritesVersionName) {
    Response response;
    response.version = Version::Http10;
    EXPECT_EQ(serialized(response), "HTTP/1.0 200 OK\r\n\r\n");

    response.version = Version::Unknown;
    EXPECT_EQ(serialized(response), " 200 OK\r\n\r\n");

    response.version = static_cast<Version>(0x200);
    EXPECT_EQ(serialized(response), " 200 OK\r\n\r\n");
}

TEST(Response, WritesHeadersSortedByName) {
    Response response;
    response.headers.set(kContentType, "application/json");
    response.headers.set(kContentLength, "2");
    response.headers.set("content-type", "");
    response.appendBody("{}");

    EXPECT_EQ(serialized(response), "HTTP/1.1 200 OK\r\n"
                                    "Content-Length: 2\r\n"
                                    "Content-Type: application/json\r\n"
                                    "content-type: \r\n"
                                    "\r\n"
                                    "{}");
}

TEST(Response, AddsNoHeaders) {
    Response response(Status::InternalServerError);
    response.appendBody("text");

    EXPECT_EQ(serialized(response), "HTTP/1.1 500 Internal Server Error\r\n\r\ntext");
}

TEST(Response, AppendsToBody) {
    Response response;
    response.appendBody("one ");
    response.appendBody("");
    response.appendBody("two");

    EXPECT_EQ(asText(response.body), "one two");
}

TEST(Response, SerializesEveryByteValueOfBody) {
    std::string body;
    for (int byte = 0; byte < 256; ++byte) {
        body += static_cast<char>(byte);
    }
    body += "\0\0end\0"sv;
    Response response;
    response.appendBody(body);

    EXPECT_EQ(serialized(response), "HTTP/1.1 200 OK\r\n\r\n" + body);
}

TEST(Response, SerializesIntoCallersMemory) {
    Response response(Status::ServiceUnavailable);
    response.headers.set(kConnection, "close");
    response.appendBody("a\0b"sv);
    std::string out(response.serializedSize() + 1, '#');

    response.serializeTo(out.data());

    EXPECT_EQ(out, serialized(response) + "#");
}

TEST(Response, SerializesLargeBody) {
    const std::string body(std::size_t{16} << 20, 'x');
    Response response;
    response.appendBody(body);

    const auto bytes = response.serialize();

    EXPECT_EQ(bytes.size(), body.size() + "HTTP/1.1 200 OK\r\n\r\n"sv.size());
    EXPECT_TRUE(asText(bytes).ends_with(body));
}

} // namespace
} // namespace quorin::http
