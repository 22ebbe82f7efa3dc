#include "json/writer.h"

#include "json/byte_scan.h"
#include "json/number_text.h"

#include <array>
#include <cmath>
#include <string_view>
#include <vector>

namespace ravenjson {
namespace {

constexpr const char* kNotFinite = "Floating point is nan or inf.";

// Indexed by byte. 0: copy the byte; otherwise the letter after the backslash, where 'u' stands for
// the six-character form "\u00xx".
constexpr std::array<char, 256> makeEscapes() {
    constexpr std::string_view kControls = "uuuuuuuubtnufruuuuuuuuuuuuuuuuuu";
    std::array<char, 256> escapes{};
    for (std::size_t i = 0; i < kControls.size(); ++i) {
        escapes[i] = kControls[i];
    }
    escapes['"'] = '"';
    escapes['\\'] = '\\';
    escapes[0x7F] = 'u'; // DEL is not printable
    return escapes;
}

constexpr std::array<char, 256> kEscapes = makeEscapes();
constexpr char escapeOf(char byte) {
    return kEscapes[static_cast<unsigned char>(byte)];
}

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Writes one value and the values nested in it. Not recursive.
class Writer {
public:
    Writer(WriterOptions options, std::string& output) : options_(options), output_(output) {}

    bool write(const Value& value) {
        const Value* next = &value;
        do {
            if (!writeScalarOrOpening(*next)) {
                return false;
            }
            next = advance();
        } while (next != nullptr);
        return true;
    }

private:
    // An open container and the next of its values to write.
    struct Scope {
        const Value::Object* object = nullptr; // nullptr for an array
        Value::Object::const_iterator member;
        const Value::Array* array = nullptr;
        std::size_t element = 0;
    };

    bool writeScalarOrOpening(const Value& value) {
        switch (value.kind()) {
        case Kind::Null:
            output_ += "null";
            return true;
        case Kind::Boolean:
            output_ += value.boolean() ? "true" : "false";
            return true;
        case Kind::Integer:
            appendInteger(value.integer(), output_);
            return true;
        case Kind::Double:
            return writeDouble(value.floating());
        case Kind::String:
            writeString(value.string());
            return true;
        case Kind::Object:
            output_ += '{';
            scopes_.push_back({&value.object(), value.object().begin()});
            return true;
        case Kind::Array:
            output_ += '[';
            scopes_.push_back({nullptr, {}, &value.array()});
            return true;
        }
        return true; // an unknown kind has no text
    }

    // Writes the delimiters and the key that precede the next value, and closes the containers that
    // are complete. Returns the next value, or nullptr if there is none.
    const Value* advance() {
        while (!scopes_.empty()) {
            Scope& scope = scopes_.back();
            if (scope.object != nullptr) {
                if (scope.member != scope.object->end()) {
                    separate(scope.member != scope.object->begin());
                    const auto& [key, value] = *scope.member++;
                    writeString(key);
                    output_ += isPretty() ? ": " : ":";
                    return &value;
                }
                close(!scope.object->empty(), '}');
            } else {
                if (scope.element != scope.array->size()) {
                    separate(scope.element != 0);
                    return &(*scope.array)[scope.element++];
                }
                close(!scope.array->empty(), ']');
            }
        }
        return nullptr;
    }

    void separate(bool comma) {
        if (comma) {
            output_ += ',';
        }
        breakLine();
    }

    void close(bool hasValues, char bracket) {
        scopes_.pop_back();
        if (hasValues) {
            breakLine();
        }
        output_ += bracket;
    }

    [[nodiscard]] bool isPretty() const { return (options_ & kPretty) != 0; }

    // If kPretty is set, starts a new line and indents it by the number of open containers.
    void breakLine() {
        if (!isPretty()) {
            return;
        }
        output_ += (options_ & kCrLf) != 0 ? "\r\n" : "\n";
        switch (options_ & (kIndentFourSpaces | kIndentTab)) {
        case kIndentFourSpaces:
            output_.append(scopes_.size() * 4, ' ');
            break;
        case kIndentTab:
            output_.append(scopes_.size(), '\t');
            break;
        default:
            output_.append(scopes_.size() * 2, ' ');
            break;
        }
    }

    bool writeDouble(double value) {
        if (std::isnan(value)) {
            output_ += "nan";
            return false;
        }
        if (std::isinf(value)) {
            output_ += value < 0 ? "-inf" : "inf";
            return false;
        }
        if (value == 0.0) {
            output_ += "0.0"; // negative zero, too
        } else {
            appendDouble(value, output_);
        }
        return true;
    }

    void writeString(std::string_view text) {
        output_ += '"';
        const char* position = text.data();
        const char* const end = position + text.size();
        for (;;) {
            const char* const special = findSpecial(position, end);
            output_.append(position, special);
            if (special == end) {
                break;
            }
            writeEscaped(*special);
            position = special + 1;
        }
        output_ += '"';
    }

    // Returns the first byte that must be escaped, or `end`.
    static const char* findSpecial(const char* position, const char* end) {
        return bytescan::find(
            position, end,
            [](bytescan::Block block) {
                return block.upTo(0x1F) | block.equalTo(0x7F) | block.equalTo('"') |
                       block.equalTo('\\');
            },
            [](char byte) { return escapeOf(byte) != 0; });
    }

    void writeEscaped(char byte) {
        const char letter = escapeOf(byte);
        output_ += '\\';
        output_ += letter;
        if (letter == 'u') {
            output_ += "00";
            output_ += kHexDigits[static_cast<unsigned char>(byte) >> 4];
            output_ += kHexDigits[static_cast<unsigned char>(byte) & 0x0F];
        }
    }

    const WriterOptions options_;
    std::string& output_;
    std::vector<Scope> scopes_; // innermost last
};

} // namespace

bool write(const Value& value, WriterOptions options, std::string& output, std::string& error) {
    if (!Writer(options, output).write(value)) {
        error = kNotFinite;
        return false;
    }
    return true;
}

std::string toString(const Value& value, WriterOptions options) {
    std::string output;
    std::string error;
    static_cast<void>(write(value, options, output, error));
    return output;
}

} // namespace ravenjson
