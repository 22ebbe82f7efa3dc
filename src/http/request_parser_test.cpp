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

Request parsed(std::string_view input) {
    Request request;
    EXPECT_TRUE(parse(request, input)) << input;
    return request;
}

bool isRefused(std::string_view input) {
    Request request;
    return !parse(request, input);
}

// --- The tokens

TEST(ReadUntil, TakesTheBytesBeforeTheDelimiterAndPassesOverIt) {
    std::size_t position = 4;
    const auto token = readUntil(position, "GET /a b\r\n", " ");

    EXPECT_FALSE(token.isError());
    EXPECT_EQ(token.value(), "/a");
    EXPECT_EQ(position, 7U);
}

TEST(ReadUntil, MayFindAnEmptyToken) {
    std::size_t position = 3;
    const auto token = readUntil(position, "GET /", " ");

    EXPECT_FALSE(token.isError());
    EXPECT_EQ(token.value(), "");
    EXPECT_EQ(position, 4U);
}

TEST(ReadUntil, TakesAnEmptyDelimiterForALineEnd) {
    std::size_t position = 0;
    const auto token = readUntil(position, "line\r\nnext", "");

    EXPECT_EQ(token.value(), "line");
    EXPECT_EQ(position, 6U);
}

TEST(ReadUntil, GivesAViewOfTheInput) {
    const std::string input = "GET /target HTTP/1.1\r\n";
    std::size_t position = 4;
    const auto token = readUntil(position, input, " ");

    EXPECT_EQ(token.value().data(), input.data() + 4);
}

TEST(ReadUntil, ReportsEveryFailureTheSameWayAndStaysWhereItIs) {
    const struct {
        std::string_view input;
        std::size_t position;
        std::string_view delimiter;
    } cases[] = {
        {"", 0, " "},               // nothing there
        {"a b", 3, " "},            // nothing left
        {"a b", 9, " "},            // beyond the end
        {"ab\r", 2, "\r\n"},        // less left than the delimiter is long
        {"abc", 0, " "},            // no delimiter
        {"ab\r\nc d", 0, " "},      // the line ends first
        {"ab\r\n:", 0, ":"},        // just before the delimiter
        {"ab\r\n", 0, "\n"},        // the line end begins before the delimiter in it
        {"ab\r", 0, " "},           // a last carriage return
        {"ab\n cd\r \n", 0, "\r\n"} // neither half is a line end
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

// The rules of the tokenizer, one byte at a time.
std::optional<std::string_view> scannedUntil(std::string_view input, std::size_t position,
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

TEST(ReadUntil, AgreesWithAScanByteByByteOnEveryShortInput) {
    constexpr std::string_view kAlphabet = "\r\n :a";
    constexpr std::size_t kLongest = 6;
    std::size_t tried = 0;

    std::vector<std::string> inputs = {""};
    for (std::size_t next = 0; next < inputs.size(); ++next) {
        const std::string input = inputs[next];
        if (input.size() < kLongest) {
            for (const char c : kAlphabet) {
                inputs.push_back(input + c);
            }
        }
        for (const std::string_view delimiter :
             {" "sv, ":"sv, "\r\n"sv, "\r"sv, "\n"sv, "\n\r"sv, "a:"sv, "\r\n\r\n"sv}) {
            for (std::size_t start = 0; start <= input.size(); ++start) {
                const auto expected = scannedUntil(input, start, delimiter);
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

// --- The steps, each from where the one before it stopped

TEST(Steps, ShareOnePosition) {
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

TEST(Steps, FailAsTheTokenThatFailed) {
    std::size_t position = 0;
    EXPECT_EQ(readRequestLine(position, "GET /\r\n").error().code, Error::kMalformed);
    EXPECT_EQ(readRequestLine(position, "GET").error().code, Error::kMalformed);
    EXPECT_EQ(readHeaders(position, "no colon\r\n\r\n").error().code, Error::kMalformed);
    position = 0;
    EXPECT_EQ(readHeaders(position, "A: no line end").error().code, Error::kMalformed);
}

// --- The request line

TEST(Parse, ReadsARequest) {
    const Request request = parsed("GET /fwfiles/a.zip HTTP/1.1\r\n"
                                   "Host: gateway:8080\r\n"
                                   "Accept: */*\r\n"
                                   "\r\n");

    EXPECT_EQ(request.line, (RequestLine{Method::Get, "/fwfiles/a.zip", Version::Http11}));
    EXPECT_THAT(request.headers.entries(),
                ElementsAre(Pair("Accept", "*/*"), Pair("Host", "gateway:8080")));
    EXPECT_THAT(request.body, IsEmpty());
}

TEST(Parse, TakesMethodAndVersionInAnyLetterCase) {
    const Request request = parsed("get / http/1.1\r\n\r\n");

    EXPECT_EQ(static_cast<std::int32_t>(request.line.method), 1);
    EXPECT_EQ(request.line.target, "/");
    EXPECT_EQ(static_cast<std::int32_t>(request.line.version), 257);
    EXPECT_EQ(parsed("DeLeTe / Http/1.0\r\n\r\n").line,
              (RequestLine{Method::Delete, "/", Version::Http10}));
}

TEST(Parse, AcceptsAnUnknownMethodOrVersion) {
    EXPECT_EQ(parsed("BREW / HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Unknown, "/", Version::Http11}));
    EXPECT_EQ(parsed("GET / HTTP/2.0\r\n\r\n").line,
              (RequestLine{Method::Get, "/", Version::Unknown}));
    EXPECT_EQ(parsed("\xFF\x80\xE7\xE9 / \xE9\r\n\r\n").line,
              (RequestLine{Method::Unknown, "/", Version::Unknown}));
}

TEST(Parse, KeepsTheTargetAsSent) {
    EXPECT_EQ(parsed("GET /%41/../b?c=d#\xC3\xA9\t HTTP/1.1\r\n\r\n").line.target,
              "/%41/../b?c=d#\xC3\xA9\t");
    EXPECT_EQ(parsed("GET /a\0b HTTP/1.1\r\n\r\n"sv).line.target, "/a\0b"s);
}

TEST(Parse, DoesNotCollapseSpacesOfTheRequestLine) {
    EXPECT_EQ(parsed("GET  / HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Get, "", Version::Unknown}));
    EXPECT_EQ(parsed(" GET / HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Unknown, "GET", Version::Unknown}));
    EXPECT_EQ(parsed("GET /a b HTTP/1.1\r\n\r\n").line,
              (RequestLine{Method::Get, "/a", Version::Unknown}));
    EXPECT_EQ(parsed("GET / HTTP/1.1 \r\n\r\n").line,
              (RequestLine{Method::Get, "/", Version::Unknown}));
    EXPECT_EQ(parsed("  \r\n\r\n").line, (RequestLine{Method::Unknown, "", Version::Unknown}));
}

TEST(Parse, RefusesARequestLineThatEndsEarly) {
    EXPECT_TRUE(isRefused(""));
    EXPECT_TRUE(isRefused("\r\n\r\n"));
    EXPECT_TRUE(isRefused("GET\r\n\r\n"));
    EXPECT_TRUE(isRefused("GET /\r\n\r\n"));
    EXPECT_TRUE(isRefused("GET\r\n / HTTP/1.1\r\n\r\n"));
    EXPECT_TRUE(isRefused("GET /\r\n HTTP/1.1\r\n\r\n"));
}

TEST(Parse, RefusesBareLineFeeds) {
    EXPECT_TRUE(isRefused("GET / HTTP/1.1\n\n"));
    EXPECT_TRUE(isRefused("GET / HTTP/1.1\n\nA: 1\r\n"));
}

// --- The headers

TEST(Parse, FindsNoHeadersBeforeAnImmediateEmptyLine) {
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\n\r\n").headers.entries(), IsEmpty());
}

TEST(Parse, TrimsSpacesAndTabsAroundNamesAndValues) {
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\nHost: \t gateway\t \r\n\r\n").headers.entries(),
                ElementsAre(Pair("Host", "gateway")));
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\n\t Host \t:a \t b\r\n\r\n").headers.entries(),
                ElementsAre(Pair("Host", "a \t b")));
}

TEST(Parse, TrimsNothingElse) {
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\n\vA\f:\n1\v\r\n\r\n").headers.entries(),
                ElementsAre(Pair("\vA\f", "\n1\v")));
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\nA:\0001\0\r\n\r\n"sv).headers.entries(),
                ElementsAre(Pair("A", "\0001\0"s)));
}

TEST(Parse, AcceptsEmptyNamesAndValues) {
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\n:\r\n\r\n").headers.entries(), ElementsAre(Pair("", "")));
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\n \t: \t\r\nB:\r\n\r\n").headers.entries(),
                ElementsAre(Pair("", ""), Pair("B", "")));
}

TEST(Parse, SeparatesAtTheFirstColonOnly) {
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\nHost: [::1]:80\r\n\r\n").headers.entries(),
                ElementsAre(Pair("Host", "[::1]:80")));
}

TEST(Parse, KeepsTheLaterValueOfAName) {
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\nA: 1\r\nA : 2\r\na: 3\r\nA: 4\r\n\r\n").headers.entries(),
                ElementsAre(Pair("A", "4"), Pair("a", "3")));
}

TEST(Parse, TakesLoneCarriageReturnsAndLineFeedsForOrdinaryBytes) {
    EXPECT_THAT(parsed("GET / HTTP/1.1\r\nA\nB: \r1\r\r\n\r\n").headers.entries(),
                ElementsAre(Pair("A\nB", "\r1\r")));
}

TEST(Parse, RefusesAHeaderLineWithoutColon) {
    EXPECT_TRUE(isRefused("GET / HTTP/1.1\r\nHost\r\n\r\n"));
    EXPECT_TRUE(isRefused("GET / HTTP/1.1\r\nHost: a\r\nno colon\r\n\r\n"));
    EXPECT_TRUE(isRefused("GET / HTTP/1.1\r\n \r\n\r\n"));
    EXPECT_TRUE(isRefused("GET / HTTP/1.1\r\nHost\r\n: a\r\n\r\n"));
}

TEST(Parse, RefusesARequestCutOffAnywhereBeforeTheEndOfItsEmptyLine) {
    constexpr std::string_view kRequest = "GET / HTTP/1.1\r\nHost: a\r\nB:\r\n\r\n";
    for (std::size_t size = 0; size < kRequest.size(); ++size) {
        EXPECT_TRUE(isRefused(kRequest.substr(0, size))) << size;
    }
    EXPECT_FALSE(isRefused(kRequest));
}

// --- The body

TEST(Parse, TakesWhateverFollowsTheEmptyLineForTheBody) {
    EXPECT_EQ(asText(parsed("POST / HTTP/1.1\r\nContent-Length: 2\r\n\r\nsix by").body), "six by");
    EXPECT_EQ(asText(parsed("POST / HTTP/1.1\r\nContent-Length: 99\r\n\r\nsix").body), "six");
    EXPECT_EQ(asText(parsed("POST / HTTP/1.1\r\n\r\n\r\n\r\nA: 1\r\n").body), "\r\n\r\nA: 1\r\n");
}

TEST(Parse, KeepsEveryByteOfTheBody) {
    std::string body;
    for (int byte = 0; byte < 256; ++byte) {
        body += static_cast<char>(byte);
    }
    EXPECT_EQ(asText(parsed("POST / HTTP/1.1\r\n\r\n" + body).body), body);
}

// --- The record

TEST(Parse, LeavesNothingOfAnEarlierRequest) {
    Request request = parsed("POST /a HTTP/1.0\r\nA: 1\r\n\r\nbody");

    ASSERT_TRUE(parse(request, "GET /b HTTP/1.1\r\nB: 2\r\n\r\n"));

    EXPECT_EQ(request, parsed("GET /b HTTP/1.1\r\nB: 2\r\n\r\n"));
}

TEST(Parse, OwnsWhatItKeeps) {
    std::string input = "GET /a HTTP/1.1\r\nA: 1\r\n\r\nbody";
    const Request request = parsed(input);
    input.assign(input.size(), '#');

    EXPECT_EQ(request.line.target, "/a");
    EXPECT_EQ(request.headers.get("A"), "1");
    EXPECT_EQ(asText(request.body), "body");
}

// --- Sizes: nothing is limited here

TEST(Parse, TakesAHeaderOf64MiB) {
    const std::string value(std::size_t{64} << 20, 'v');
    const Request request = parsed("GET / HTTP/1.1\r\nA: " + value + "\r\n\r\n");

    EXPECT_TRUE(request.headers.entries().at("A") == value);
}

TEST(Parse, TakesATargetOf64MiB) {
    const std::string target(std::size_t{64} << 20, '/');
    const Request request = parsed("GET " + target + " HTTP/1.1\r\n\r\n");

    EXPECT_TRUE(request.line.target == target);
}

TEST(Parse, TakesABodyOf64MiB) {
    const std::string body(std::size_t{64} << 20, '\r');
    const Request request = parsed("POST / HTTP/1.1\r\n\r\n" + body);

    EXPECT_TRUE(asText(request.body) == body);
}

TEST(Parse, TakesAHundredThousandHeaders) {
    constexpr int kCount = 100'000;
    std::string input = "GET / HTTP/1.1\r\n";
    for (int i = 0; i < kCount; ++i) {
        input += "Name-" + std::to_string(i) + ": " + std::to_string(i) + "\r\n";
    }
    const Request request = parsed(input + "\r\n");

    EXPECT_EQ(request.headers.entries().size(), std::size_t{kCount});
    EXPECT_EQ(request.headers.get("Name-0"), "0");
    EXPECT_EQ(request.headers.get("Name-99999"), "99999");
}

} // namespace
} // namespace quorin::http::parser
