// Reads any bytes as JSON in all three ways, and holds the results against each other: the ways
// agree on what is well-formed; what parses is written, compact and pretty, and reads back as the
// same document.

#include "require.h"
#include "json/reader.h"
#include "json/value.h"
#include "json/writer.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace {

using ravenjson::Value;

// Counts what it is told, and can stop the reading at any piece.
class Counter final : public ravenjson::Handler {
public:
    explicit Counter(std::size_t stopAt) : stopAt_(stopAt) {}

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

    [[nodiscard]] std::size_t pieces() const { return pieces_; }
    [[nodiscard]] std::size_t open() const { return open_; }

private:
    bool count() { return ++pieces_ != stopAt_; }
    bool enter() {
        ++open_;
        return count();
    }
    bool leave() {
        require(open_ > 0);
        --open_;
        return count();
    }

    std::size_t stopAt_;
    std::size_t pieces_ = 0;
    std::size_t open_ = 0;
};

// The same document, but for what writing gives up by its rules: a double without a fraction is
// written without one and comes back as an integer. Doubles of 17 digits come back exactly.
bool isSameAsWritten(const Value& original, const Value& readBack) {
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
            if (!isSameAsWritten(original.at(i), readBack.at(i))) {
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
            if (other == nullptr || !isSameAsWritten(member, *other)) {
                return false;
            }
        }
        return true;
    }
    if (original.kind() == ravenjson::Kind::Integer && original.integer() == INT64_MIN) {
        return true; // a wrapped one; never reached, since its text reads as a double
    }
    return original == readBack;
}

// A text that holds a wrapped integer of the lowest value reads back as a double.
bool holdsLowestInteger(const Value& value) {
    if (value.isInteger()) {
        return value.integer() == INT64_MIN;
    }
    if (value.isArray()) {
        for (const Value& element : value.array()) {
            if (holdsLowestInteger(element)) {
                return true;
            }
        }
    }
    if (value.isObject()) {
        for (const auto& [key, member] : value.object()) {
            if (holdsLowestInteger(member)) {
                return true;
            }
        }
    }
    return false;
}

void checkWriting(const Value& document, ravenjson::WriterOptions options) {
    std::string text;
    std::string error;
    if (!ravenjson::write(document, options, text, error)) {
        require(error == "Floating point is nan or inf.");
        require(text == ravenjson::toString(document, options));
        return;
    }
    Value readBack;
    require(ravenjson::parse(text, readBack, error));
    if (!holdsLowestInteger(document)) {
        require(isSameAsWritten(document, readBack));
    }
    // What was read back is written to the same text again.
    require(ravenjson::toString(readBack, options) == text || holdsLowestInteger(document));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    Value document;
    std::string error;
    const bool isDocument = ravenjson::parse(text, document, error);
    require(isDocument == error.empty());

    const char* skipped = text.data();
    std::string skipError;
    const bool isValue = ravenjson::skipValue(skipped, text.data() + size, skipError);
    require(skipped >= text.data() && skipped <= text.data() + size);

    const char* told = text.data();
    std::string tellError;
    Counter counter(0);
    require(ravenjson::parseValue(told, text.data() + size, counter, tellError) == isValue);
    require(skipError == tellError);
    if (isValue) {
        require(told == skipped);
        require(counter.open() == 0);
        Counter impatient(counter.pieces());
        told = text.data();
        require(!ravenjson::parseValue(told, text.data() + size, impatient, tellError));
        require(tellError == "SAX handler cancels parsing.");
    }

    if (isDocument) {
        require(isValue);
        checkWriting(document, ravenjson::kCompact);
        checkWriting(document, ravenjson::kPretty | ravenjson::kIndentTab | ravenjson::kCrLf);
        const Value copy = document;
        require(copy == document);
    } else if (!isValue) {
        require(error == skipError);
    }
    return 0;
}
