#include "http/response.h"

#include "http/header_names.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <string_view>

namespace quorin::http {
namespace {

using namespace std::string_view_literals;

std::string sent(const Response& response) {
    return std::string(asText(response.serialize()));
}

TEST(Response, IsOkAtFirst) {
    const Response response;

    EXPECT_EQ(response.version, Version::Http11);
    EXPECT_EQ(response.status, 200);
    EXPECT_EQ(response.reason, "OK");
    EXPECT_TRUE(response.headers.entries().empty());
    EXPECT_TRUE(response.body.empty());
    EXPECT_EQ(sent(response), "HTTP/1.1 200 OK\r\n\r\n");
}

TEST(Response, OfAStatusHasItsStandardPhrase) {
    const Response response(404);

    EXPECT_EQ(response.version, Version::Http11);
    EXPECT_EQ(response.status, 404);
    EXPECT_EQ(response.reason, "Not Found");
    EXPECT_EQ(sent(response), "HTTP/1.1 404 Not Found\r\n\r\n");
}

TEST(Response, OfAStatusWithoutPhraseKeepsTheSpaceBeforeIt) {
    EXPECT_EQ(sent(Response(306)), "HTTP/1.1 306 \r\n\r\n");
    EXPECT_EQ(sent(Response(0)), "HTTP/1.1 0 \r\n\r\n");
}

TEST(Response, OfAStatusAndAReasonDoesNotConsultTheTable) {
    EXPECT_EQ(sent(Response(404, "Gone Fishing")), "HTTP/1.1 404 Gone Fishing\r\n\r\n");
    EXPECT_EQ(sent(Response(404, "")), "HTTP/1.1 404 \r\n\r\n");
}

TEST(Response, WritesANegativeStatusWithItsSign) {
    EXPECT_EQ(sent(Response(-1)), "HTTP/1.1 -1 \r\n\r\n");
    EXPECT_EQ(sent(Response(std::numeric_limits<std::int32_t>::min())),
              "HTTP/1.1 -2147483648 \r\n\r\n");
}

TEST(Response, WritesTheNameOfItsVersion) {
    Response response;
    response.version = Version::Http10;
    EXPECT_EQ(sent(response), "HTTP/1.0 200 OK\r\n\r\n");

    response.version = Version::Unknown;
    EXPECT_EQ(sent(response), " 200 OK\r\n\r\n");

    response.version = static_cast<Version>(0x200);
    EXPECT_EQ(sent(response), " 200 OK\r\n\r\n");
}

TEST(Response, WritesItsHeadersInTheOrderOfTheirNames) {
    Response response;
    response.headers.set(kContentType, "application/json");
    response.headers.set(kContentLength, "2");
    response.headers.set("content-type", "");
    response.appendBody("{}");

    EXPECT_EQ(sent(response), "HTTP/1.1 200 OK\r\n"
                              "Content-Length: 2\r\n"
                              "Content-Type: application/json\r\n"
                              "content-type: \r\n"
                              "\r\n"
                              "{}");
}

TEST(Response, AddsNoHeaderOfItsOwn) {
    Response response(500);
    response.appendBody("text");

    EXPECT_EQ(sent(response), "HTTP/1.1 500 Internal Server Error\r\n\r\ntext");
}

TEST(Response, AppendsToTheEndOfItsBody) {
    Response response;
    response.appendBody("one ");
    response.appendBody("");
    response.appendBody("two");

    EXPECT_EQ(asText(response.body), "one two");
}

TEST(Response, SendsEveryByteOfItsBody) {
    std::string body;
    for (int byte = 0; byte < 256; ++byte) {
        body += static_cast<char>(byte);
    }
    body += "\0\0end\0"sv;
    Response response;
    response.appendBody(body);

    EXPECT_EQ(sent(response), "HTTP/1.1 200 OK\r\n\r\n" + body);
}

TEST(Response, SerializesIntoMemoryOfTheCaller) {
    Response response(503);
    response.headers.set(kConnection, "close");
    response.appendBody("a\0b"sv);
    std::string out(response.serializedSize() + 1, '#');

    response.serializeTo(out.data());

    EXPECT_EQ(out, sent(response) + "#");
}

TEST(Response, SendsABodyOfManyMegabytes) {
    const std::string body(std::size_t{16} << 20, 'x');
    Response response;
    response.appendBody(body);

    const auto bytes = response.serialize();

    EXPECT_EQ(bytes.size(), body.size() + "HTTP/1.1 200 OK\r\n\r\n"sv.size());
    EXPECT_TRUE(asText(bytes).ends_with(body));
}

} // namespace
} // namespace quorin::http
