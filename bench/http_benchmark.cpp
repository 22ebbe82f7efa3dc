// Parses requests and serializes responses. Each request is parsed by
//   Parse/...          our parser, into a Request
//   HttpParser/...     http-parser with callbacks that fill the same Request
//   HttpParserScan/... http-parser without callbacks, which stores nothing
// Serializing a response is compared with snprintf.

#include "http/header_names.h"
#include "http/request_parser.h"
#include "http/response.h"

#include <benchmark/benchmark.h>
#include <http_parser.h>

#include <array>
#include <cstdio>
#include <string>
#include <string_view>

namespace quorin::http {
namespace {

constexpr std::string_view kDownload = "GET /fwfiles/controller-4.2.1.zip HTTP/1.1\r\n"
                                       "Host: gateway.example:8080\r\n"
                                       "User-Agent: curl/7.88.1\r\n"
                                       "Accept: */*\r\n"
                                       "\r\n";

constexpr std::string_view kReset = "DELETE /notifications/workstation-17.json HTTP/1.1\r\n"
                                    "Host: gateway.example:8080\r\n"
                                    "X-Quorin-Notification-Reset-Date: 2024-02-29T12:34:56.789Z\r\n"
                                    "Connection: close\r\n"
                                    "\r\n";

constexpr std::string_view kBrowser =
    "GET /patterns/floor-3/overview.json?revision=20240229&unit=all HTTP/1.1\r\n"
    "Host: gateway.example:8080\r\n"
    "User-Agent: Mozilla/5.0 (Windows NT 10.0; Win64; x64; rv:128.0) Gecko/20100101 "
    "Firefox/128.0\r\n"
    "Accept: text/html,application/xhtml+xml,application/xml;q=0.9,*/*;q=0.8\r\n"
    "Accept-Language: en-US,en;q=0.7,de;q=0.3\r\n"
    "Accept-Encoding: gzip, deflate, br, zstd\r\n"
    "Referer: http://gateway.example:8080/patterns/floor-3/\r\n"
    "DNT: 1\r\n"
    "Connection: keep-alive\r\n"
    "Upgrade-Insecure-Requests: 1\r\n"
    "Sec-Fetch-Dest: document\r\n"
    "Sec-Fetch-Mode: navigate\r\n"
    "Sec-Fetch-Site: same-origin\r\n"
    "Priority: u=0, i\r\n"
    "\r\n";

std::string postRequest(std::size_t size) {
    return "POST /plugins/a.bin HTTP/1.1\r\nHost: gateway.example:8080\r\nContent-Length: " +
           std::to_string(size) + "\r\n\r\n" + std::string(size, 'x');
}

std::string requestWithHeaders(std::int64_t count) {
    std::string input = "GET / HTTP/1.1\r\n";
    for (std::int64_t i = 0; i < count; ++i) {
        input += "X-Header-" + std::to_string(i) + ": value " + std::to_string(i) + "\r\n";
    }
    return input + "\r\n";
}

void setThroughput(benchmark::State& state, std::string_view input) {
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(input.size()));
}

void parse(benchmark::State& state, std::string_view input) {
    for (auto _ : state) {
        Request request;
        if (!parser::parse(request, input)) {
            state.SkipWithError("the request was rejected");
            break;
        }
        benchmark::DoNotOptimize(request);
    }
    setThroughput(state, input);
}

// Fills a Request from the callbacks of http-parser. The whole input is one buffer, so http-parser
// reports each token in one piece, and views of the tokens remain valid.
struct RequestBuilder {
    Request request;
    std::string_view name;

    static RequestBuilder& of(http_parser* parser) {
        return *static_cast<RequestBuilder*>(parser->data);
    }

    static http_parser_settings settings() {
        http_parser_settings settings;
        http_parser_settings_init(&settings);
        settings.on_url = [](http_parser* parser, const char* at, std::size_t length) {
            of(parser).request.line.target.assign(at, length);
            return 0;
        };
        settings.on_header_field = [](http_parser* parser, const char* at, std::size_t length) {
            of(parser).name = {at, length};
            return 0;
        };
        settings.on_header_value = [](http_parser* parser, const char* at, std::size_t length) {
            of(parser).request.headers.set(of(parser).name, {at, length});
            return 0;
        };
        settings.on_headers_complete = [](http_parser* parser) {
            auto& line = of(parser).request.line;
            line.version = static_cast<Version>((parser->http_major << 8) | parser->http_minor);
            line.method = methodFromName(http_method_str(static_cast<http_method>(parser->method)));
            return 0;
        };
        settings.on_body = [](http_parser* parser, const char* at, std::size_t length) {
            const auto bytes = asBytes({at, length});
            of(parser).request.body.assign(bytes.begin(), bytes.end());
            return 0;
        };
        return settings;
    }
};

void httpParser(benchmark::State& state, std::string_view input) {
    const http_parser_settings settings = RequestBuilder::settings();
    for (auto _ : state) {
        RequestBuilder builder;
        http_parser parser;
        http_parser_init(&parser, HTTP_REQUEST);
        parser.data = &builder;
        if (http_parser_execute(&parser, &settings, input.data(), input.size()) != input.size()) {
            state.SkipWithError("the request was rejected");
            break;
        }
        benchmark::DoNotOptimize(builder);
    }
    setThroughput(state, input);
}

void httpParserScan(benchmark::State& state, std::string_view input) {
    http_parser_settings settings;
    http_parser_settings_init(&settings);
    for (auto _ : state) {
        http_parser parser;
        http_parser_init(&parser, HTTP_REQUEST);
        if (http_parser_execute(&parser, &settings, input.data(), input.size()) != input.size()) {
            state.SkipWithError("the request was rejected");
            break;
        }
        benchmark::DoNotOptimize(parser);
    }
    setThroughput(state, input);
}

void parseRejected(benchmark::State& state) {
    constexpr std::string_view kInput = "GET /fwfiles/controller-4.2.1.zip\r\n\r\n";
    for (auto _ : state) {
        Request request;
        benchmark::DoNotOptimize(parser::parse(request, kInput));
    }
    setThroughput(state, kInput);
}

// The time per request should grow no faster than N log N, like inserting into a map.
void parseManyHeaders(benchmark::State& state) {
    const std::string input = requestWithHeaders(state.range(0));
    parse(state, input);
    state.SetComplexityN(state.range(0));
}

void parseBody(benchmark::State& state) {
    const std::string input = postRequest(static_cast<std::size_t>(state.range(0)));
    parse(state, input);
}

void httpParserBody(benchmark::State& state) {
    const std::string input = postRequest(static_cast<std::size_t>(state.range(0)));
    httpParser(state, input);
}

#define QUORIN_REQUEST(name, input)                                                                \
    BENCHMARK_CAPTURE(parse, name, input)->Name("Parse/" #name);                                   \
    BENCHMARK_CAPTURE(httpParser, name, input)->Name("HttpParser/" #name);                         \
    BENCHMARK_CAPTURE(httpParserScan, name, input)->Name("HttpParserScan/" #name)

QUORIN_REQUEST(download, kDownload);
QUORIN_REQUEST(reset, kReset);
QUORIN_REQUEST(browser, kBrowser);
BENCHMARK(parseBody)->Name("Parse/body")->Arg(1 << 20);
BENCHMARK(httpParserBody)->Name("HttpParser/body")->Arg(1 << 20);
BENCHMARK(parseRejected)->Name("Parse/rejected");
BENCHMARK(parseManyHeaders)
    ->Name("Parse/headers")
    ->RangeMultiplier(10)
    ->Range(10, 100'000)
    ->Complexity(benchmark::oNLogN);

constexpr std::string_view kJson = R"({"WebApiCommScheme":"https"})";

void writeReply(benchmark::State& state) {
    for (auto _ : state) {
        Response response(200);
        response.headers.set(kContentLength, std::to_string(kJson.size()));
        response.headers.set(kContentType, "application/json");
        response.appendBody(kJson);
        benchmark::DoNotOptimize(response.serialize());
    }
}

void serializeReply(benchmark::State& state) {
    Response response(200);
    response.headers.set(kContentLength, std::to_string(kJson.size()));
    response.headers.set(kContentType, "application/json");
    response.appendBody(kJson);
    for (auto _ : state) {
        benchmark::DoNotOptimize(response.serialize());
    }
}

void snprintfReply(benchmark::State& state) {
    const std::string body(kJson);
    for (auto _ : state) {
        std::array<char, 512> reply;
        const int size = std::snprintf(
            reply.data(), reply.size(), "HTTP/1.1 %d %s\r\n%s: %zu\r\n%s: %s\r\n\r\n%s", 200, "OK",
            "Content-Length", body.size(), "Content-Type", "application/json", body.c_str());
        benchmark::DoNotOptimize(std::vector<char>(reply.data(), reply.data() + size));
    }
}

void serializeBody(benchmark::State& state) {
    Response response;
    response.body.resize(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(response.serialize());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

BENCHMARK(writeReply)->Name("Write/reply");
BENCHMARK(serializeReply)->Name("Write/replySerializeOnly");
BENCHMARK(snprintfReply)->Name("Snprintf/reply");
BENCHMARK(serializeBody)->Name("Write/body")->Arg(1 << 20);

} // namespace
} // namespace quorin::http
