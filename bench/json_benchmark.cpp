// Parses JSON text into a tree and writes a tree as compact text, with our library and three
// others, on notification documents of 1 KiB and 5 MiB. Each iteration creates its result and
// destroys it. The other libraries are used through their usual interface.

#include "notification_documents.h"

#include "json/reader.h"
#include "json/writer.h"

#include <QByteArray>
#include <QJsonDocument>

#include <nlohmann/json.hpp>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

struct Raven {
    using Document = ravenjson::Value;

    static Document parse(const std::string& text) {
        Document document;
        std::string error;
        if (!ravenjson::parse(text, document, error)) {
            std::abort();
        }
        return document;
    }

    static std::string write(const Document& document) { return ravenjson::toString(document); }
};

struct RapidJson {
    using Document = rapidjson::Document;

    static Document parse(const std::string& text) {
        Document document;
        document.Parse(text.c_str());
        if (document.HasParseError()) {
            std::abort();
        }
        return document;
    }

    static rapidjson::StringBuffer write(const Document& document) {
        rapidjson::StringBuffer buffer;
        rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
        document.Accept(writer);
        return buffer;
    }
};

struct Nlohmann {
    using Document = nlohmann::json;

    static Document parse(const std::string& text) { return Document::parse(text); }
    static std::string write(const Document& document) { return document.dump(); }
};

struct Qt {
    using Document = QJsonDocument;

    static Document parse(const std::string& text) {
        const QByteArray bytes =
            QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()));
        Document document = QJsonDocument::fromJson(bytes);
        if (document.isNull()) {
            std::abort();
        }
        return document;
    }

    static QByteArray write(const Document& document) {
        return document.toJson(QJsonDocument::Compact);
    }
};

void reportBytes(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                            static_cast<std::int64_t>(text.size()));
}

template<class Library>
void parseDocument(benchmark::State& state) {
    const std::string text = notificationDocument(static_cast<std::size_t>(state.range(0)));
    for (auto _ : state) {
        const auto document = Library::parse(text);
        benchmark::DoNotOptimize(&document);
    }
    reportBytes(state, text);
}

template<class Library>
void writeDocument(benchmark::State& state) {
    const std::string text = notificationDocument(static_cast<std::size_t>(state.range(0)));
    const auto document = Library::parse(text);
    for (auto _ : state) {
        const auto written = Library::write(document);
        benchmark::DoNotOptimize(&written);
    }
    reportBytes(state, text);
}

constexpr std::int64_t kSmallBytes = 1 << 10;
constexpr std::int64_t kLargeBytes = 5 << 20;

void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(kSmallBytes)->Arg(kLargeBytes)->Unit(benchmark::kMicrosecond);
}

BENCHMARK(parseDocument<Raven>)->Apply(sizes);
BENCHMARK(parseDocument<RapidJson>)->Apply(sizes);
BENCHMARK(parseDocument<Nlohmann>)->Apply(sizes);
BENCHMARK(parseDocument<Qt>)->Apply(sizes);
BENCHMARK(writeDocument<Raven>)->Apply(sizes);
BENCHMARK(writeDocument<RapidJson>)->Apply(sizes);
BENCHMARK(writeDocument<Nlohmann>)->Apply(sizes);
BENCHMARK(writeDocument<Qt>)->Apply(sizes);

} // namespace
