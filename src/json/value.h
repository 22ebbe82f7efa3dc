#pragma once

#include "json/arena.h"
#include "json/key_order.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace ravenjson {

// Type of a Value. Each kind except Null is a single bit; the code 8 is unused.
enum class Kind : std::uint32_t {
    Null = 0,
    Boolean = 1,
    Integer = 2, // signed, 64 bits
    Double = 4,  // floating point, 64 bits
    String = 16, // bytes, UTF-8 by convention
    Object = 32,
    Array = 64,
};

// A JSON value: null, a boolean, an integer, a double, a string, an object or an array. Owns the
// values nested in it.
//
// Copies are deep; a moved-from value is null. Not thread-safe, but several threads may read the
// same value.
//
// Object members are sorted by the bytes of their keys. Integers and doubles are distinct kinds:
// 1 and 1.0 are not equal.
//
// The parts of a parsed tree share memory pages (see Arena). A part moved out of the tree keeps its
// pages allocated; a copy does not.
//
// Nesting depth is unlimited: copying, comparing and destroying use a bounded amount of stack.
//
// The payload accessors boolean(), integer(), floating(), string(), object() and array(), and the
// functions that use them, throw std::logic_error if the value is of another kind.
class Value {
public:
    using String = std::basic_string<char, std::char_traits<char>, ArenaAllocator<char>>;
    using Object =
        std::map<String, Value, KeyOrder, ArenaAllocator<std::pair<const String, Value>>>;
    using Array = std::vector<Value, ArenaAllocator<Value>>;

    // Constructs null.
    Value() noexcept : kind_(Kind::Null) {}

    // Constructs the empty value of a kind: null, false, 0, 0.0, "", {} or []. An unknown code is
    // kept, without a payload.
    explicit Value(Kind kind);

    // Constrained so that a pointer does not convert to a boolean, nor an unsigned integer to an
    // integer or a double.
    Value(std::same_as<bool> auto boolean) noexcept : kind_(Kind::Boolean) {
        payload_.boolean = boolean;
    }
    Value(std::signed_integral auto integer) noexcept : kind_(Kind::Integer) {
        payload_.integer = integer;
    }
    Value(std::floating_point auto floating) noexcept : kind_(Kind::Double) {
        payload_.floating = floating;
    }
    Value(String text);
    Value(std::string_view text);
    Value(const std::string& text) : Value(std::string_view(text)) {}
    Value(const char* text) : Value(std::string_view(text)) {}
    Value(std::nullptr_t) = delete;

    Value(const Value& other);
    Value(Value&& other) noexcept
        : kind_(std::exchange(other.kind_, Kind::Null)), payload_(other.payload_) {}
    // `other` may be a part of this value: it is copied or moved before the old payload is
    // destroyed.
    Value& operator=(const Value& other) {
        Value(other).swap(*this);
        return *this;
    }
    Value& operator=(Value&& other) noexcept {
        Value(std::move(other)).swap(*this);
        return *this;
    }
    ~Value() {
        if (kind_ >= Kind::String) {
            destroyContainer();
        }
    }

    void swap(Value& other) noexcept {
        std::swap(kind_, other.kind_);
        std::swap(payload_, other.payload_);
    }

    [[nodiscard]] Kind kind() const noexcept { return kind_; }
    [[nodiscard]] bool isNull() const noexcept { return kind_ == Kind::Null; }
    [[nodiscard]] bool isBoolean() const noexcept { return kind_ == Kind::Boolean; }
    [[nodiscard]] bool isInteger() const noexcept { return kind_ == Kind::Integer; }
    [[nodiscard]] bool isDouble() const noexcept { return kind_ == Kind::Double; }
    [[nodiscard]] bool isString() const noexcept { return kind_ == Kind::String; }
    [[nodiscard]] bool isObject() const noexcept { return kind_ == Kind::Object; }
    [[nodiscard]] bool isArray() const noexcept { return kind_ == Kind::Array; }

    [[nodiscard]] bool boolean() const;
    [[nodiscard]] std::int64_t integer() const;
    [[nodiscard]] double floating() const;
    [[nodiscard]] const String& string() const;
    [[nodiscard]] String& string();
    [[nodiscard]] const Object& object() const;
    [[nodiscard]] Object& object();
    [[nodiscard]] const Array& array() const;
    [[nodiscard]] Array& array();

    // Returns the member with that key, or nullptr if there is none or this is not an object.
    [[nodiscard]] const Value* find(std::string_view key) const noexcept;
    [[nodiscard]] Value* find(std::string_view key) noexcept;

    // Returns the member with that key; adds a null member if there is none.
    [[nodiscard]] Value& operator[](std::string_view key) { return object()[String(key)]; }

    // Returns an element of an array. Throws std::out_of_range if there is none at `index`.
    [[nodiscard]] const Value& at(std::size_t index) const { return array().at(index); }
    [[nodiscard]] Value& at(std::size_t index) { return array().at(index); }

    // Appends an element to an array and returns a reference to it.
    Value& append(Value element) { return array().emplace_back(std::move(element)); }

    // Resets the payload to the empty value of the same kind.
    void clear() { *this = Value(kind_); }

    // Compares kinds and payloads, nested values included.
    friend bool operator==(const Value& left, const Value& right);

private:
    class AbstractContainer;
    class ValueContainer;
    template<class T>
    class Container;
    class Teardown;

    union Payload {
        bool boolean;
        std::int64_t integer = 0;
        double floating;
        AbstractContainer* container; // owned
    };

    void destroyContainer() noexcept;
    void copyContainer(const Value& other);
    [[noreturn]] static void throwKindMismatch();
    void requireKind(Kind kind) const {
        if (kind_ != kind) {
            throwKindMismatch();
        }
    }

    Kind kind_;
    Payload payload_;
};

// Payload of a string, an object or an array; owned by the value.
class Value::AbstractContainer {
public:
    AbstractContainer() = default;
    virtual ~AbstractContainer() = default;

    AbstractContainer(const AbstractContainer&) = delete;
    AbstractContainer& operator=(const AbstractContainer&) = delete;

    static void* operator new(std::size_t bytes) { return Arena::allocate(bytes); }
    static void operator delete(void* block) noexcept { Arena::deallocate(block); }
};

// Container with nested values: an object or an array.
class Value::ValueContainer : public AbstractContainer {
private:
    friend class Teardown;

    ValueContainer* nextPending_ = nullptr; // of Teardown's list
};

template<class T>
class Value::Container final
    : public std::conditional_t<std::is_same_v<T, String>, AbstractContainer, ValueContainer> {
public:
    template<class... Arguments>
    explicit Container(Arguments&&... arguments) : content(std::forward<Arguments>(arguments)...) {}

    T content;
};

inline Value::Value(String text) : kind_(Kind::String) {
    payload_.container = new Container<String>(std::move(text));
}

inline Value::Value(std::string_view text) : kind_(Kind::String) {
    payload_.container = new Container<String>(text);
}

inline Value::Value(const Value& other) : Value() {
    if (other.kind_ >= Kind::String) {
        copyContainer(other);
    } else {
        kind_ = other.kind_;
        payload_ = other.payload_;
    }
}

inline bool Value::boolean() const {
    requireKind(Kind::Boolean);
    return payload_.boolean;
}

inline std::int64_t Value::integer() const {
    requireKind(Kind::Integer);
    return payload_.integer;
}

inline double Value::floating() const {
    requireKind(Kind::Double);
    return payload_.floating;
}

inline const Value::String& Value::string() const {
    requireKind(Kind::String);
    return static_cast<const Container<String>*>(payload_.container)->content;
}

inline Value::String& Value::string() {
    requireKind(Kind::String);
    return static_cast<Container<String>*>(payload_.container)->content;
}

inline const Value::Object& Value::object() const {
    requireKind(Kind::Object);
    return static_cast<const Container<Object>*>(payload_.container)->content;
}

inline Value::Object& Value::object() {
    requireKind(Kind::Object);
    return static_cast<Container<Object>*>(payload_.container)->content;
}

inline const Value::Array& Value::array() const {
    requireKind(Kind::Array);
    return static_cast<const Container<Array>*>(payload_.container)->content;
}

inline Value::Array& Value::array() {
    requireKind(Kind::Array);
    return static_cast<Container<Array>*>(payload_.container)->content;
}

} // namespace ravenjson
