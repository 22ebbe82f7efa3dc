#include "http/request_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quorin::http::parser {
namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

Request parseValid(std::string_view input) {
    Request request;
    EXPECT_TRUE(parse(request, input)) << input;
    return request;
}

bool isMalformed(std::string_view input) {
    Request request;
    return !parse(request, input);
}

// --- readUntil

TEST(ReadUntil, ReadsTokenAndSkipsDelimiter) {
    std::size_t position = 4;
    const auto token = readUntil(position, "GET /a b\r\n", " ");

    EXPECT_FALSE(token.isError());
    EXPECT_EQ(token.value(), "/a");
    EXPECT_EQ(position, 7U);
}

TEST(ReadUntil, ReadsEmptyToken) {
    std::size_t position = 3;
    const auto token = readUntil(position, "GET /", " ");

    EXPECT_FALSE(token.isError());
    EXPECT_EQ(token.value(), "");
    EXPECT_EQ(position, 4U);
}

TEST(ReadUntil, EmptyDelimiterMeansLineEnd) {
    std::size_t position = 0;
    const auto token = readUntil(position, "line\r\nnext", "");

    EXPECT_EQ(token.value(), "line");
    EXPECT_EQ(position, 6U);
}

TEST(ReadUntil, ReturnsViewOfInput) {
    const std::string input = "GET /target HTTP/1.1\r\n";
    std::size_t position = 4;
    const auto token = readUntil(position, input, " ");

    EXPECT_EQ(token.value().data(), input.data() + 4);
}

TEST(ReadUntil, FailureKeepsPosition) {
    const struct {
        std::string_view input;
        std::size_t position;
        std::string_view delimiter;
    } cases[] = {
        {"", 0, " "},               // empty input
        {"a b", 3, " "},            // at the end
        {"a b", 9, " "},            // past the end
        {"ab\r", 2, "\r\n"},        // remainder shorter than the delimiter
        {"abc", 0, " "},            // no delimiter
        {"ab\r\nc d", 0, " "},      // the line ends first
        {"ab\r\n:", 0, ":"},        // line ends immediately before the delimiter
        {"ab\r\n", 0, "\n"},        // line end starts before the delimiter and overlaps it
        {"ab\r", 0, " "},           // trailing CR
        {"ab\n cd\r \n", 0, "\r\n"} // lone CR and LF are not line ends
    };
    for (const auto& [input, start, delimiter] : cases) {
        std::size_t position = start;
        const auto token = readUntil(position, input, delimiter);

        EXPECT_TRUE(token.isError()) << input;
        EXPECT_EQ(token.error().code, Error::kMalformed);
        EXPECT_EQ(token.error().message, "");
        EXPECT_EQ(position, start);
    }
}

// Reference implementation of readUntil(), byte by byte.
std::optional<std::string_view> scanUntil(std::string_view input, std::size_t position,
                                          std::string_view delimiter) {
    for (std::size_t at = position; at + delimiter.size() <= input.size(); ++at) {
        if (input.substr(at, delimiter.size()) == delimiter) {
            return input.substr(position, at - position);
        }
        if (input.substr(at, 2) == "\r\n") {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

TEST(ReadUntil, AgreesWithReferenceOnAllShortInputs) {
    constexpr std::string_view kAlphabet = "\r\n :a";
    constexpr std::size_t kMaxSize = 6;
    std::size_t tried = 0;

    std::vector<std::string> inputs = {""};
    for (std::size_t next = 0; next < inputs.size(); ++next) {
        const std::string input = inputs[next];
        if (input.size() < kMaxSize) {
            for (const char c : kAlphabet) {
                inputs.push_back(input + c);
            }
        }
        for (const std::string_view delimiter :
             {" "sv, ":"sv, "\r\n"sv, "\r"sv, "\n"sv, "\n\r"sv, "a:"sv, "\r\n\r\n"sv}) {
            for (std::size_t start = 0; start <= input.size(); ++start) {
                const auto expected = scanUntil(input, start, delimiter);
                std::size_t position = start;
                const auto token = readUntil(position, input, delimiter);

                ++tried;
                ASSERT_EQ(token.isError(), !expected) << testing::PrintToString(input) << start;
                ASSERT_EQ(token.value(), expected.value_or("")) << testing::PrintToString(input);
                ASSERT_EQ(position, expected ? start + expected->size() + delimiter.size() : start);
            }
        }
    }
    EXPECT_EQ(inputs.size(), 19531U);
    EXPECT_GT(tried, 900'000U);
}

// --- Parsing steps

TEST(Steps, ShareReadPosition) {
    const std::string input = "GET / HTTP/1.1\r\nA: 1\r\n\r\nbody";
    std::size_t position = 0;

    const auto line = readRequestLine(position, input);
    EXPECT_EQ(line.value(), (RequestLine{Method::Get, "/", Version::Http11}));
    EXPECT_EQ(position, 16U);

    const auto headers = readHeaders(position, input);
    EXPECT_THAT(headers.value(), ElementsAre(Pair("A", "1")));
    EXPECT_EQ(position, 24U);

    const auto body = readBody(position, input);
    EXPECT_EQ(asText(body.value()), "body");
    EXPECT_EQ(position, input.size());
}

TEST(Steps, FailIfTokenFails) {
    std::size_t position = 0;
    EXPECT_EQ(readRequestLine(position, "GET /\r\n").error().code, Error::kMalformed);
    EXPECT_EQ(readRequestLine(position, "GET").error().code, Error::kMalformed);
    EXPECT_EQ(readHeaders(position, "no colon\r\n\r\n").error().code, Error::kMalformed);
    position = 0;
    EXPECT_EQ(readHeaders(position, "A: no line end").error().code, Error::kMalformed);
}

// --- Request line

TEST(Parse, ReadsRequest) {
    const Request request = parseValid("GET /fwfiles/a.zip HTTP/1.1\r\n"
                                       "Host: gateway:8080\r\n"
                                       "Accept: */*\r\n"
                                       "\r\n");

    EXPECT_EQ(request.line, (RequestLine{Method::Get, "/fwfiles/a.zip", Version::Http11}));
    EXPECT_THAT(request.headers.entries(),
                ElementsAre(Pair("Accept", "*/*"), Pair("Host", "gateway:8080")));
    EXPECT_THAT(request.body, IsEmpty());
}

TEST(Parse, IgnoresCaseOfMethodAndVersion) {
    const Request request = parseValid("get / http/1.1\r\n\r\n");

    EXPECT_EQ(static_cast<std::int32_t>(request.line.method), 1);
    EXPECT_EQ(request.line.target, "/");
    EXPECT_EQ(static_cast<std::int32_t>(request.line.version), 257);
    EXPECT_EQ(parseValid("DeLeTe / Http/1.0\r\n\r\n").line,
              (RequestLine{Method::Delete, "/", Version::Http10}));
}

TEST(Parse, AcceptsUnknownMethodAndVersion) {
    EXPECT_EQ(parseValid("BREW / HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Unknown, "/", Version::Http11}));
    EXPECT_EQ(parseValid("GET / HTTP/2.0\r\n\r\n").line,
              (RequestLine{Method::Get, "/", Version::Unknown}));
    EXPECT_EQ(parseValid("\xFF\x80\xE7\xE9 / \xE9\r\n\r\n").line,
              (RequestLine{Method::Unknown, "/", Version::Unknown}));
}

TEST(Parse, KeepsTargetUnchanged) {
    EXPECT_EQ(parseValid("GET /%41/../b?c=d#\xC3\xA9\t HTTP/1.1\r\n\r\n").line.target,
              "/%41/../b?c=d#\xC3\xA9\t");
    EXPECT_EQ(parseValid("GET /a\0b HTTP/1.1\r\n\r\n"sv).line.target, "/a\0b"s);
}

TEST(Parse, DoesNotCollapseSpacesInRequestLine) {
    EXPECT_EQ(parseValid("GET  / HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Get, "", Version::Unknown}));
    EXPECT_EQ(parseValid(" GET / HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Unknown, "GET", Version::Unknown}));
    EXPECT_EQ(parseValid("GET /a b HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Get, "/a", Version::Unknown}));
    EXPECT_EQ(parseValid("GET / HTTP/1.1 \r\n\r\n").line,
              (RequestLine{Method::Get, "/", Version::Unknown}));
    EXPECT_EQ(parseValid("  \r\n\r\n").line, (RequestLine{Method::Unknown, "", Version::Unknown}));
}

TEST(Parse, RejectsIncompleteRequestLine) {
    EXPECT_TRUE(isMalformed(""));
    EXPECT_TRUE(isMalformed("\r\n\r\n"));
    EXPECT_TRUE(isMalformed("GET\r\n\r\n"));
    EXPECT_TRUE(isMalformed("GET /\r\n\r\n"));
    EXPECT_TRUE(isMalformed("GET\r\n / HTTP/1.1\r\n\r\n"));
    EXPECT_TRUE(isMalformed("GET /\r\n HTTP/1.1\r\n\r\n"));
}

TEST(Parse, RejectsBareLineFeeds) {
    EXPECT_TRUE(isMalformed("GET / HTTP/1.1\n\n"));
    EXPECT_TRUE(isMalformed("GET / HTTP/1.1\n\nA: 1\r\n"));
}

// --- Headers

TEST(Parse, AcceptsRequestWithoutHeaders) {
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\n\r\n").headers.entries(), IsEmpty());
}

TEST(Parse, TrimsSpacesAndTabs) {
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\nHost: \t gateway\t \r\n\r\n").headers.entries(),
                ElementsAre(Pair("Host", "gateway")));
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\n\t Host \t:a \t b\r\n\r\n").headers.entries(),
                ElementsAre(Pair("Host", "a \t b")));
}

TEST(Parse, DoesNotTrimOtherBytes) {
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\n\vA\f:\n1\v\r\n\r\n").headers.entries(),
                ElementsAre(Pair("\vA\f", "\n1\v")));
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\nA:\0001\0\r\n\r\n"sv).headers.entries(),
                ElementsAre(Pair("A", "\0001\0"s)));
}

TEST(Parse, AcceptsEmptyNamesAndValues) {
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\n:\r\n\r\n").headers.entries(),
                ElementsAre(Pair("", "")));
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\n \t: \t\r\nB:\r\n\r\n").headers.entries(),
                ElementsAre(Pair("", ""), Pair("B", "")));
}

TEST(Parse, SplitsHeaderAtFirstColon) {
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\nHost: [::1]:80\r\n\r\n").headers.entries(),
                ElementsAre(Pair("Host", "[::1]:80")));
}

TEST(Parse, KeepsLastValueOfRepeatedHeader) {
    EXPECT_THAT(
        parseValid("GET / HTTP/1.1\r\nA: 1\r\nA : 2\r\na: 3\r\nA: 4\r\n\r\n").headers.entries(),
        ElementsAre(Pair("A", "4"), Pair("a", "3")));
}

TEST(Parse, TreatsLoneCrAndLfAsOrdinaryBytes) {
    EXPECT_THAT(parseValid("GET / HTTP/1.1\r\nA\nB: \r1\r\r\n\r\n").headers.entries(),
                ElementsAre(Pair("A\nB", "\r1\r")));
}

TEST(Parse, RejectsHeaderLineWithoutColon) {
    EXPECT_TRUE(isMalformed("GET / HTTP/1.1\r\nHost\r\n\r\n"));
    EXPECT_TRUE(isMalformed("GET / HTTP/1.1\r\nHost: a\r\nno colon\r\n\r\n"));
    EXPECT_TRUE(isMalformed("GET / HTTP/1.1\r\n \r\n\r\n"));
    EXPECT_TRUE(isMalformed("GET / HTTP/1.1\r\nHost\r\n: a\r\n\r\n"));
}

TEST(Parse, RejectsTruncatedRequest) {
    constexpr std::string_view kRequest = "GET / HTTP/1.1\r\nHost: a\r\nB:\r\n\r\n";
    for (std::size_t size = 0; size < kRequest.size(); ++size) {
        EXPECT_TRUE(isMalformed(kRequest.substr(0, size))) << size;
    }
    EXPECT_FALSE(isMalformed(kRequest));
}

// --- Body

TEST(Parse, TakesRestOfInputAsBody) {
    EXPECT_EQ(asText(parseValid("POST / HTTP/1.1\r\nContent-Length: 2\r\n\r\nsix by").body),
              "six by");
    EXPECT_EQ(asText(parseValid("POST / HTTP/1.1\r\nContent-Length: 99\r\n\r\nsix").body), "six");
    EXPECT_EQ(asText(parseValid("POST / HTTP/1.1\r\n\r\n\r\n\r\nA: 1\r\n").body),
              "\r\n\r\nA: 1\r\n");
}

TEST(Parse, KeepsEveryByteValueOfBody) {
    std::string body;
    for (int byte = 0; byte < 256; ++byte) {
        body += static_cast<char>(byte);
    }
    EXPECT_EQ(asText(parseValid("POST / HTTP/1.1\r\n\r\n" + body).body), body);
}

// --- Request object

TEST(Parse, OverwritesPreviousRequest) {
    Request request = parseValid("POST /a HTTP/1.0\r\nA: 1\r\n\r\nbody");

    ASSERT_TRUE(parse(request, "GET /b HTTP/1.1\r\nB: 2\r\n\r\n"));

    EXPECT_EQ(request, parseValid("GET /b HTTP/1.1\r\nB: 2\r\n\r\n"));
}

TEST(Parse, RequestDoesNotReferToInput) {
    std::string input = "GET /a HTTP/1.1\r\nA: 1\r\n\r\nbody";
    const Request request = parseValid(input);
    input.assign(input.size(), '#');

    EXPECT_EQ(request.line.target, "/a");
    EXPECT_EQ(request.headers.get("A"), "1");
    EXPECT_EQ(asText(request.body), "body");
}

// --- Sizes: the parser has no limits

TEST(Parse, AcceptsHeaderOf64MiB) {
    const std::string value(std::size_t{64} << 20, 'v');
    const Request request = parseValid("GET / HTTP/1.1\r\nA: " + value + "\r\n\r\n");

    EXPECT_TRUE(request.headers.entries().at("A") == value);
}

TEST(Parse, AcceptsTargetOf64MiB) {
    const std::string target(std::size_t{64} << 20, '/');
    const Request request = parseValid("GET " + target + " HTTP/1.1\r\n\r\n");

    EXPECT_TRUE(request.line.target == target);
}

TEST(Parse, AcceptsBodyOf64MiB) {
    const std::string body(std::size_t{64} << 20, '\r');
    const Request request = parseValid("POST / HTTP/1.1\r\n\r\n" + body);

    EXPECT_TRUE(asText(request.body) == body);
}

TEST(Parse, AcceptsHundredThousandHeaders) {
    constexpr int kCount = 100'000;
    std::string input = "GET / HTTP/1.1\r\n";
    for (int i = 0; i < kCount; ++i) {
        input += "Name-" + std::to_string(i) + ": " + std::to_string(i) + "\r\n";
    }
    const Request request = parseValid(input + "\r\n");

    EXPECT_EQ(request.headers.entries().size(), std::size_t{kCount});
    EXPECT_EQ(request.headers.get("Name-0"), "0");
    EXPECT_EQ(request.headers.get("Name-99999"), "99999");
}

} // namespace
} // namespace quorin::http::parser
