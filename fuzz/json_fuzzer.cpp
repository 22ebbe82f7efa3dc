// Parses arbitrary bytes as JSON with parse(), parseValue() and skipValue().
//   - All three agree on whether the input is well-formed.
//   - A parsed document, written compact or pretty, reads back as the same document.

#include "json/reader.h"
#include "json/value.h"
#include "json/writer.h"
#include "require.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using ravenjson::Value;

// Counts events. Cancels at the event with number `cancelAt`, counted from 1; 0: never.
class Counter final : public ravenjson::Handler {
public:
    explicit Counter(std::size_t cancelAt) : cancelAt_(cancelAt) {}

    bool null() override { return count(); }
    bool boolean(bool) override { return count(); }
    bool integer(std::int64_t) override { return count(); }
    bool floating(double) override { return count(); }
    bool string(std::string_view) override { return count(); }
    bool startArray() override { return enter(); }
    bool endArray() override { return leave(); }
    bool startObject() override { return enter(); }
    bool key(std::string_view) override { return count(); }
    bool endObject() override { return leave(); }

    [[nodiscard]] std::size_t events() const { return events_; }
    [[nodiscard]] std::size_t open() const { return open_; }

private:
    bool count() { return ++events_ != cancelAt_; }
    bool enter() {
        ++open_;
        return count();
    }
    bool leave() {
        require(open_ > 0, "each end event has a start event");
        --open_;
        return count();
    }

    std::size_t cancelAt_;
    std::size_t events_ = 0;
    std::size_t open_ = 0;
};

// Equality, except that a double may read back as an integer: the writer adds no fraction to a
// double without one.
bool isSameAfterRoundTrip(const Value& original, const Value& readBack) {
    if (original.kind() == ravenjson::Kind::Double && readBack.isInteger()) {
        return original.floating() == static_cast<double>(readBack.integer());
    }
    if (original.kind() != readBack.kind()) {
        return false;
    }
    if (original.isArray()) {
        if (original.array().size() != readBack.array().size()) {
            return false;
        }
        for (std::size_t i = 0; i < original.array().size(); ++i) {
            if (!isSameAfterRoundTrip(original.at(i), readBack.at(i))) {
                return false;
            }
        }
        return true;
    }
    if (original.isObject()) {
        if (original.object().size() != readBack.object().size()) {
            return false;
        }
        for (const auto& [key, member] : original.object()) {
            const Value* const other = readBack.find(key);
            if (other == nullptr || !isSameAfterRoundTrip(member, *other)) {
                return false;
            }
        }
        return true;
    }
    return original == readBack;
}

// The minimum integer, which a wrapped number can yield, is written with digits that read back as a
// double.
bool containsMinInteger(const Value& value) {
    if (value.isInteger()) {
        return value.integer() == INT64_MIN;
    }
    if (value.isArray()) {
        for (const Value& element : value.array()) {
            if (containsMinInteger(element)) {
                return true;
            }
        }
    }
    if (value.isObject()) {
        for (const auto& [key, member] : value.object()) {
            if (containsMinInteger(member)) {
                return true;
            }
        }
    }
    return false;
}

void checkRoundTrip(const Value& document, ravenjson::WriterOptions options) {
    std::string text;
    std::string error;
    if (!ravenjson::write(document, options, text, error)) {
        require(error == "Floating point is nan or inf.",
                "only NaN and infinity cannot be written");
        require(text == ravenjson::toString(document, options),
                "toString() returns the same partial text");
        return;
    }
    Value readBack;
    require(ravenjson::parse(text, readBack, error), "written text is well-formed");
    if (!containsMinInteger(document)) {
        require(isSameAfterRoundTrip(document, readBack), "written text reads back equal");
        require(ravenjson::toString(readBack, options) == text,
                "a second write gives the same text");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    Value document;
    std::string error;
    const bool isDocument = ravenjson::parse(text, document, error);
    require(isDocument == error.empty(), "parse() sets the error only on failure");

    const char* skipPosition = text.data();
    std::string skipError;
    const bool isValue = ravenjson::skipValue(skipPosition, text.data() + size, skipError);
    require(skipPosition >= text.data() && skipPosition <= text.data() + size,
            "the position stays inside the input");

    const char* position = text.data();
    std::string eventError;
    Counter counter(0);
    require(ravenjson::parseValue(position, text.data() + size, counter, eventError) == isValue,
            "parseValue() and skipValue() agree");
    require(skipError == eventError, "parseValue() and skipValue() report the same error");
    if (isValue) {
        require(position == skipPosition, "parseValue() and skipValue() stop at the same place");
        require(counter.open() == 0, "each start event has an end event");
        Counter canceller(counter.events());
        position = text.data();
        require(!ravenjson::parseValue(position, text.data() + size, canceller, eventError),
                "the handler can cancel at the last event");
        require(eventError == "SAX handler cancels parsing.", "cancelling has its own error");
    }

    if (isDocument) {
        require(isValue, "a document is a value");
        checkRoundTrip(document, ravenjson::kCompact);
        checkRoundTrip(document, ravenjson::kPretty | ravenjson::kIndentTab | ravenjson::kCrLf);
        const Value copy = document;
        require(copy == document, "a copy is equal");
    } else if (!isValue) {
        require(error == skipError, "parse() and skipValue() report the same error");
    }
    return 0;
}
