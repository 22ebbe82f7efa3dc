#pragma once

#include "json/value.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ravenjson {

/// Makes a tree of what a reader tells. The functions are those of Handler, but nothing here is
/// virtual, and a text that had to be put together is taken over instead of copied.
class TreeBuilder {
public:
    static constexpr bool kTakesTexts = true;

    bool null() { return add(); }
    bool boolean(bool value) { return add(value); }
    bool integer(std::int64_t value) { return add(value); }
    bool floating(double value) { return add(value); }
    bool string(std::string_view text) { return add(text); }
    bool string(std::string&& text) { return add(std::move(text)); }
    bool startArray() { return open(Kind::Array); }
    bool endArray() { return close(); }
    bool startObject() { return open(Kind::Object); }
    bool key(std::string_view text) { return key(std::string(text)); }

    bool key(std::string&& text) {
        // Our own writer sorts the members, so the end is the best place to look first.
        Value::Object& members = open_.back()->object();
        slot_ = &members.try_emplace(members.end(), std::move(text))->second;
        return true;
    }

    bool endObject() { return close(); }

    /// The finished tree.
    Value take() { return std::move(root_); }

private:
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

    bool open(Kind kind) {
        open_.push_back(&place(kind));
        enter();
        return true;
    }

    bool close() {
        open_.pop_back();
        enter();
        return true;
    }

    void enter() {
        const bool inArray = !open_.empty() && open_.back()->isArray();
        elements_ = inArray ? &open_.back()->array() : nullptr;
    }

    Value root_;
    std::vector<Value*> open_;           ///< the innermost open container is the last
    Value::Array* elements_ = nullptr;   ///< of the innermost container, when it is an array
    Value* slot_ = &root_;               ///< where the next value goes when it is not
};

} // namespace ravenjson
