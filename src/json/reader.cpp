#include "json/reader.h"

#include "json/arena.h"
#include "json/text_reader.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace ravenjson {
namespace {

// Sink that builds a value tree. Strings with resolved escapes are moved into it, not copied.
class TreeBuilder {
public:
    using Text = Value::String;

    TreeBuilder() { open_.reserve(kTypicalDepth); }

    bool null() { return add(); }
    bool boolean(bool value) { return add(value); }
    bool integer(std::int64_t value) { return add(value); }
    bool floating(double value) { return add(value); }
    bool string(std::string_view text) { return add(text); }
    bool string(Value::String&& text) { return add(std::move(text)); }

    bool startArray() {
        open_.push_back(&place(Kind::Array));
        elements_ = &open_.back()->array();
        return true;
    }

    bool endArray() { return close(); }

    bool startObject() {
        open_.push_back(&place(Kind::Object));
        members_ = &open_.back()->object();
        elements_ = nullptr;
        return true;
    }

    bool key(std::string_view text) { return startMember(text); }
    bool key(Value::String&& text) { return startMember(std::move(text)); }
    bool endObject() { return close(); }

    // Returns the complete tree; call once.
    [[nodiscard]] Value take() { return std::move(root_); }

private:
    static constexpr std::size_t kTypicalDepth = 16;

    // Constructs the next value in the innermost container, or as the root, and returns it.
    template<class... Payload>
    Value& place(Payload&&... payload) {
        if (elements_ != nullptr) {
            return elements_->emplace_back(std::forward<Payload>(payload)...);
        }
        return *slot_ = Value(std::forward<Payload>(payload)...);
    }

    template<class... Payload>
    bool add(Payload&&... payload) {
        place(std::forward<Payload>(payload)...);
        return true;
    }

    // If the key exists already, the new value replaces the old one.
    template<class Text>
    bool startMember(Text&& text) {
        // Keys often arrive in order, as our writer emits them, so hint at the end.
        const auto member = members_->emplace_hint(members_->end(), std::piecewise_construct,
                                                   std::forward_as_tuple(std::forward<Text>(text)),
                                                   std::forward_as_tuple());
        slot_ = &member->second;
        return true;
    }

    bool close() {
        open_.pop_back();
        elements_ = nullptr;
        if (!open_.empty()) {
            Value& container = *open_.back();
            if (container.isArray()) {
                elements_ = &container.array();
            } else {
                members_ = &container.object();
            }
        }
        return true;
    }

    Value root_;
    std::vector<Value*> open_;         // the open containers, innermost last
    Value::Array* elements_ = nullptr; // the innermost container if it is an array, else nullptr
    Value::Object* members_ = nullptr; // the innermost container if it is an object
    Value* slot_ = &root_;             // receives the next value unless it is an array element
};

// Sink that forwards the events to a caller's handler.
class HandlerSink {
public:
    using Text = std::string;

    explicit HandlerSink(Handler& handler) : handler_(handler) {}

    bool null() { return handler_.null(); }
    bool boolean(bool value) { return handler_.boolean(value); }
    bool integer(std::int64_t value) { return handler_.integer(value); }
    bool floating(double value) { return handler_.floating(value); }
    bool string(std::string_view text) { return handler_.string(text); }
    bool startArray() { return handler_.startArray(); }
    bool endArray() { return handler_.endArray(); }
    bool startObject() { return handler_.startObject(); }
    bool key(std::string_view text) { return handler_.key(text); }
    bool endObject() { return handler_.endObject(); }

private:
    Handler& handler_;
};

// String type that discards what is appended.
struct NullText {
    void reserve(std::size_t) {}
    void append(const char*, const char*) {}
    NullText& operator+=(char) { return *this; }
};

// Sink that ignores the events.
class NullSink {
public:
    using Text = NullText;

    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool integer(std::int64_t) { return true; }
    bool floating(double) { return true; }
    bool string(std::string_view) { return true; }
    bool string(NullText) { return true; }
    bool startArray() { return true; }
    bool endArray() { return true; }
    bool startObject() { return true; }
    bool key(std::string_view) { return true; }
    bool key(NullText) { return true; }
    bool endObject() { return true; }
};

// Approximate size of the tree of a compact text, without long strings.
constexpr std::size_t kTreeBytesPerTextByte = 4;

template<class Sink>
bool readWith(const char*& position, const char* end, Sink& sink, std::string& error) {
    TextReader<Sink> reader(position, end, sink);
    const bool ok = reader.readValue();
    position = reader.position();
    if (!ok) {
        error = reader.error();
    }
    return ok;
}

} // namespace

bool parse(std::string_view text, Value& value, std::string& error) {
    Arena arena(kTreeBytesPerTextByte * text.size());
    TreeBuilder builder;
    TextReader<TreeBuilder> reader(text.data(), text.data() + text.size(), builder);
    if (!reader.readValue() || !reader.readEnd()) {
        error = reader.error();
        return false;
    }
    value = builder.take();
    return true;
}

bool parseValue(const char*& position, const char* end, Handler& handler, std::string& error) {
    HandlerSink sink(handler);
    return readWith(position, end, sink, error);
}

bool skipValue(const char*& position, const char* end, std::string& error) {
    NullSink sink;
    return readWith(position, end, sink, error);
}

} // namespace ravenjson
