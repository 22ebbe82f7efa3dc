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

// What a Value holds. Each kind but null is one bit; no kind has the code 8.
enum class Kind : std::uint32_t {
    Null = 0,
    Boolean = 1,
    Integer = 2, // signed, 64 bits
    Double = 4,  // floating point, 64 bits
    String = 16, // bytes, UTF-8 by convention
    Object = 32,
    Array = 64,
};

// One JSON value, and so a whole document: null, a boolean, an integer, a double, a string, an
// object or an array.
//
// A value: a copy is deep, and a value moved from is null. It belongs to one thread at a time;
// reading one value from several threads is fine.
//
// The members of an object are in the ascending byte order of their keys, in whatever order they
// were added. Integers and doubles are distinct kinds: 1 and 1.0 are not equal.
//
// The parts of a tree that was read from a text share pages of memory. A part moved out of such a
// tree keeps the pages it is on; a copy does not.
//
// Nesting has no limit: copying, comparing and destroying take the same small amount of stack for
// a tree of any depth.
//
// The accessors of a payload are for the kind they are named after, so test the kind first.
// Called on a value of another kind they throw std::logic_error.
class Value {
public:
    using String = std::basic_string<char, std::char_traits<char>, ArenaAllocator<char>>;
    using Object =
        std::map<String, Value, KeyOrder, ArenaAllocator<std::pair<const String, Value>>>;
    using Array = std::vector<Value, ArenaAllocator<Value>>;

    // Null.
    Value() noexcept : kind_(Kind::Null) {}

    // The empty value of a kind: null, false, 0, 0.0, "", {} or []. A code that is no kind is
    // kept, with nothing behind it.
    explicit Value(Kind kind);

    // What a value is made of must say so itself: a pointer is no boolean, and an unsigned number
    // is neither an integer nor a double.
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
    // Each takes what it is given before it lets go of what it had: a value may be given a part of
    // itself.
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

    // The member of that name, or nullptr when this is an object without it or no object at all.
    [[nodiscard]] const Value* find(std::string_view key) const noexcept;
    [[nodiscard]] Value* find(std::string_view key) noexcept;

    // The member of that name of an object; a null one is added when there is none.
    [[nodiscard]] Value& operator[](std::string_view key) { return object()[String(key)]; }

    // An element of an array; throws std::out_of_range beyond its end.
    [[nodiscard]] const Value& at(std::size_t index) const { return array().at(index); }
    [[nodiscard]] Value& at(std::size_t index) { return array().at(index); }

    // Adds an element at the end of an array, and gives it back.
    Value& append(Value element) { return array().emplace_back(std::move(element)); }

    // Keeps the kind and empties the payload: no members, elements or characters, false, 0, 0.0.
    void clear() { *this = Value(kind_); }

    // The same kind and the same payload all the way down.
    friend bool operator==(const Value& left, const Value& right);

private:
    class AbstractContainer;
    class NestContainer;
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
    [[noreturn]] static void refuseKind();
    void require(Kind kind) const {
        if (kind_ != kind) {
            refuseKind();
        }
    }

    Kind kind_;
    Payload payload_;
};

// What a string, an object or an array keeps outside the value that owns it.
class Value::AbstractContainer {
public:
    AbstractContainer() = default;
    virtual ~AbstractContainer() = default;

    AbstractContainer(const AbstractContainer&) = delete;
    AbstractContainer& operator=(const AbstractContainer&) = delete;

    static void* operator new(std::size_t bytes) { return Arena::allocate(bytes); }
    static void operator delete(void* block) noexcept { Arena::deallocate(block); }
};

// One that holds values.
class Value::NestContainer : public AbstractContainer {
private:
    friend class Teardown;

    NestContainer* nextPending_ = nullptr;
};

template<class T>
class Value::Container final
    : public std::conditional_t<std::is_same_v<T, String>, AbstractContainer, NestContainer> {
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
    require(Kind::Boolean);
    return payload_.boolean;
}

inline std::int64_t Value::integer() const {
    require(Kind::Integer);
    return payload_.integer;
}

inline double Value::floating() const {
    require(Kind::Double);
    return payload_.floating;
}

inline const Value::String& Value::string() const {
    require(Kind::String);
    return static_cast<const Container<String>*>(payload_.container)->content;
}

inline Value::String& Value::string() {
    require(Kind::String);
    return static_cast<Container<String>*>(payload_.container)->content;
}

inline const Value::Object& Value::object() const {
    require(Kind::Object);
    return static_cast<const Container<Object>*>(payload_.container)->content;
}

inline Value::Object& Value::object() {
    require(Kind::Object);
    return static_cast<Container<Object>*>(payload_.container)->content;
}

inline const Value::Array& Value::array() const {
    require(Kind::Array);
    return static_cast<const Container<Array>*>(payload_.container)->content;
}

inline Value::Array& Value::array() {
    require(Kind::Array);
    return static_cast<Container<Array>*>(payload_.container)->content;
}

} // namespace ravenjson
