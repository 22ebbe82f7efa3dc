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

// Makes a tree. A text that the reader put together is taken over instead of copied.
class TreeBuilder {
public:
    using Text = Value::String;

    TreeBuilder() { open_.reserve(kUsualDepth); }

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

    bool key(std::string_view text) { return openMember(text); }
    bool key(Value::String&& text) { return openMember(std::move(text)); }
    bool endObject() { return close(); }

    // The finished tree.
    [[nodiscard]] Value take() { return std::move(root_); }

private:
    static constexpr std::size_t kUsualDepth = 16;

    // Where the next value stands, made from its payload.
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

    // A member of that name already there gives its place to the new one.
    template<class Text>
    bool openMember(Text&& text) {
        // Names often come in order, as from our own writer: the end is the first place to look.
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
    std::vector<Value*> open_;         // the containers not yet closed, the innermost last
    Value::Array* elements_ = nullptr; // of the innermost one when it is an array, else null
    Value::Object* members_ = nullptr; // of the innermost one when it is an object
    Value* slot_ = &root_;             // where the next value goes when it is no element
};

// Hands the events on to a handler from outside.
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

// In the place of a text that nobody takes.
struct NoText {
    void reserve(std::size_t) {}
    void append(const char*, const char*) {}
    NoText& operator+=(char) { return *this; }
};

// Tells nobody.
class NoSink {
public:
    using Text = NoText;

    bool null() { return true; }
    bool boolean(bool) { return true; }
    bool integer(std::int64_t) { return true; }
    bool floating(double) { return true; }
    bool string(std::string_view) { return true; }
    bool string(NoText) { return true; }
    bool startArray() { return true; }
    bool endArray() { return true; }
    bool startObject() { return true; }
    bool key(std::string_view) { return true; }
    bool key(NoText) { return true; }
    bool endObject() { return true; }
};

// About what the tree of a compact text takes, strings left out.
constexpr std::size_t kTreeBytesPerTextByte = 4;

template<class Sink>
bool readOne(const char*& position, const char* end, Sink& sink, std::string& error) {
    Reader<Sink> reader(position, end, sink);
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
    Reader<TreeBuilder> reader(text.data(), text.data() + text.size(), builder);
    if (!reader.readValue() || !reader.readEnd()) {
        error = reader.error();
        return false;
    }
    value = builder.take();
    return true;
}

bool parseValue(const char*& position, const char* end, Handler& handler, std::string& error) {
    HandlerSink sink(handler);
    return readOne(position, end, sink, error);
}

bool skipValue(const char*& position, const char* end, std::string& error) {
    NoSink sink;
    return readOne(position, end, sink, error);
}

} // namespace ravenjson
