#include "json/value.h"

#include "json/reader.h"
#include "json/testing/allocation_counter.h"
#include "json/testing/small_stack.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>
#include <thread>
#include <type_traits>

namespace {

using ravenjson::Kind;
using ravenjson::Value;

constexpr int kDeepLevels = 1'000'000;
const std::string kLongText(100, 'x'); // too long for the small-string buffer

Value object(std::initializer_list<std::pair<std::string, Value>> members) {
    Value value(Kind::Object);
    for (const auto& [key, member] : members) {
        value[key] = member;
    }
    return value;
}

Value array(std::initializer_list<Value> elements) {
    Value value(Kind::Array);
    for (const Value& element : elements) {
        value.append(element);
    }
    return value;
}

// Returns an integer nested in arrays, or in alternating arrays and objects.
Value nested(int levels, bool withObjects) {
    Value value(7);
    for (int i = 0; i < levels; ++i) {
        Value outer(withObjects && i % 2 == 0 ? Kind::Object : Kind::Array);
        if (outer.isObject()) {
            outer["k"] = std::move(value);
        } else {
            outer.append(std::move(value));
        }
        value = std::move(outer);
    }
    return value;
}

std::vector<Value> oneOfEachKind() {
    return {Value(),
            Value(true),
            Value(5),
            Value(2.5),
            Value(kLongText),
            object({{"a", 1}, {"b", kLongText}, {"c", array({1, 2})}}),
            array({1, kLongText, object({{"x", 1.5}})})};
}

TEST(ValueTest, KindsHaveFixedCodes) {
    EXPECT_EQ(static_cast<std::uint32_t>(Kind::Null), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(Kind::Boolean), 1U);
    EXPECT_EQ(static_cast<std::uint32_t>(Kind::Integer), 2U);
    EXPECT_EQ(static_cast<std::uint32_t>(Kind::Double), 4U);
    EXPECT_EQ(static_cast<std::uint32_t>(Kind::String), 16U);
    EXPECT_EQ(static_cast<std::uint32_t>(Kind::Object), 32U);
    EXPECT_EQ(static_cast<std::uint32_t>(Kind::Array), 64U);
    static_assert(sizeof(Kind) == 4);
}

TEST(ValueTest, DefaultConstructsNull) {
    const Value value;
    EXPECT_EQ(value.kind(), Kind::Null);
    EXPECT_TRUE(value.isNull());
}

TEST(ValueTest, ConstructsFromEachPayload) {
    EXPECT_TRUE(Value(true).isBoolean());
    EXPECT_TRUE(Value(true).boolean());
    EXPECT_FALSE(Value(false).boolean());
    EXPECT_TRUE(Value(-3).isInteger());
    EXPECT_EQ(Value(-3).integer(), -3);
    EXPECT_EQ(Value(std::numeric_limits<std::int64_t>::min()).integer(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(Value(7LL).integer(), 7);
    EXPECT_TRUE(Value(1.0).isDouble());
    EXPECT_EQ(Value(0.25).floating(), 0.25);
    EXPECT_TRUE(Value("text").isString());
    EXPECT_EQ(Value("text").string(), "text");
    EXPECT_EQ(Value(std::string("a\0b", 3)).string(), std::string_view("a\0b", 3));
    EXPECT_EQ(Value(std::string_view("view")).string(), "view");
}

TEST(ValueTest, RejectsPointersAndUnsignedIntegers) {
    static_assert(!std::is_constructible_v<Value, int*>);
    static_assert(!std::is_constructible_v<Value, std::nullptr_t>);
    static_assert(!std::is_constructible_v<Value, unsigned>);
    static_assert(!std::is_constructible_v<Value, std::uint64_t>);
}

TEST(ValueTest, ConstructsEmptyValueOfKind) {
    EXPECT_TRUE(Value(Kind::Null).isNull());
    EXPECT_FALSE(Value(Kind::Boolean).boolean());
    EXPECT_EQ(Value(Kind::Integer).integer(), 0);
    EXPECT_EQ(Value(Kind::Double).floating(), 0.0);
    EXPECT_EQ(Value(Kind::String).string(), "");
    EXPECT_TRUE(Value(Kind::Object).object().empty());
    EXPECT_TRUE(Value(Kind::Array).array().empty());
}

TEST(ValueTest, KeepsUnknownKindCode) {
    for (const std::uint32_t code : {8U, 48U, 128U}) {
        Value value{Kind(code)};
        const Value copy = value;
        EXPECT_EQ(copy.kind(), Kind(code));
        EXPECT_EQ(copy, value);
        value.clear();
        EXPECT_EQ(value.kind(), Kind(code));
        EXPECT_NE(value, Value());
    }
}

TEST(ValueTest, SortsMembersByKey) {
    Value value(Kind::Object);
    value["b"] = 2;
    value["\xC3\xA4"] = 4;
    value["a"] = 1;
    value["aa"] = 3;
    std::vector<std::string> keys;
    for (const auto& [key, member] : value.object()) {
        keys.emplace_back(key);
    }
    EXPECT_THAT(keys, testing::ElementsAre("a", "aa", "b", "\xC3\xA4"));
}

TEST(ValueTest, FindsMembers) {
    Value value = object({{"a", 1}, {"b", "text"}});
    ASSERT_NE(value.find("b"), nullptr);
    EXPECT_EQ(value.find("b")->string(), "text");
    *value.find("a") = 9;
    EXPECT_EQ(value["a"].integer(), 9);
    EXPECT_EQ(value.find("c"), nullptr);
    EXPECT_EQ(std::as_const(value).find("c"), nullptr);
    EXPECT_EQ(value.object().size(), 2U) << "find() adds no member";
    EXPECT_EQ(Value().find("a"), nullptr);
    EXPECT_EQ(array({1}).find("a"), nullptr);
}

TEST(ValueTest, SubscriptAddsNullMember) {
    Value value(Kind::Object);
    EXPECT_TRUE(value["new"].isNull());
    EXPECT_EQ(value.object().size(), 1U);
}

TEST(ValueTest, AppendsAndIndexesElements) {
    Value value(Kind::Array);
    EXPECT_EQ(value.append(1).integer(), 1);
    value.append("two");
    value.at(0) = 10;
    EXPECT_EQ(value.at(0).integer(), 10);
    EXPECT_EQ(std::as_const(value).at(1).string(), "two");
    EXPECT_THROW(static_cast<void>(value.at(2)), std::out_of_range);
}

TEST(ValueTest, AccessorsThrowForOtherKinds) {
    std::vector<Value> values = oneOfEachKind();
    for (Value& value : values) {
        const Value& constant = value;
        const auto expectAccess = [](bool isKind, auto&& access) {
            if (isKind) {
                EXPECT_NO_THROW(access());
            } else {
                EXPECT_THROW(access(), std::logic_error);
            }
        };
        expectAccess(value.isBoolean(), [&] { static_cast<void>(constant.boolean()); });
        expectAccess(value.isInteger(), [&] { static_cast<void>(constant.integer()); });
        expectAccess(value.isDouble(), [&] { static_cast<void>(constant.floating()); });
        expectAccess(value.isString(), [&] { static_cast<void>(constant.string()); });
        expectAccess(value.isString(), [&] { static_cast<void>(value.string()); });
        expectAccess(value.isObject(), [&] { static_cast<void>(constant.object()); });
        expectAccess(value.isObject(), [&] { static_cast<void>(value.object()); });
        expectAccess(value.isObject(), [&] { static_cast<void>(value["a"]); });
        expectAccess(value.isArray(), [&] { static_cast<void>(constant.array()); });
        expectAccess(value.isArray(), [&] { static_cast<void>(value.array()); });
        expectAccess(value.isArray(), [&] { value.append(1); });
    }
}

TEST(ValueTest, AssignmentFreesContainer) {
    std::vector<Value> values = oneOfEachKind();
    for (Value& value : values) {
        const AllocationCounter heap;
        Value copy = value;
        const bool hasContainer = value.isString() || value.isObject() || value.isArray();
        EXPECT_EQ(heap.liveBlocks() > 0, hasContainer);
        copy = 5;
        EXPECT_EQ(heap.liveBlocks(), 0);
        EXPECT_EQ(copy.integer(), 5);
    }
}

TEST(ValueTest, DestructorFreesContainer) {
    const AllocationCounter heap;
    {
        const std::vector<Value> values = oneOfEachKind();
        EXPECT_GT(heap.liveBlocks(), 0);
    }
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ValueTest, CopiesDeeply) {
    for (const Value& value : oneOfEachKind()) {
        const Value copy = value;
        EXPECT_EQ(copy, value);
    }
    Value original = object({{"list", array({"a", "b"})}});
    Value copy = original;
    copy["list"].at(0).string() = "changed";
    copy["more"] = 1;
    EXPECT_EQ(original, object({{"list", array({"a", "b"})}}));
    original = copy;
    EXPECT_EQ(original, copy);
}

TEST(ValueTest, MoveLeavesNull) {
    for (Value value : oneOfEachKind()) {
        const Value copy = value;
        const AllocationCounter heap;
        Value moved = std::move(value);
        EXPECT_EQ(heap.allocations(), 0U);
        EXPECT_TRUE(value.isNull()); // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(moved, copy);
        value = std::move(moved);
        EXPECT_TRUE(moved.isNull()); // NOLINT(bugprone-use-after-move)
        EXPECT_EQ(value, copy);
    }
}

TEST(ValueTest, AssignsFromItsOwnParts) {
    Value value = array({1, array({2, "deep"})});
    const Value& same = value;
    value = same;
    EXPECT_EQ(value, array({1, array({2, "deep"})}));
    value = value.at(1);
    EXPECT_EQ(value, array({2, "deep"}));
    value = std::move(value.at(1));
    EXPECT_EQ(value, Value("deep"));
    value = Value(Kind::Object);
    value["self"] = value;
    EXPECT_EQ(value["self"].kind(), Kind::Object);
}

TEST(ValueTest, SwapsPayloads) {
    Value left = "text";
    Value right = array({1});
    left.swap(right);
    EXPECT_EQ(left, array({1}));
    EXPECT_EQ(right, Value("text"));
}

TEST(ValueTest, ClearKeepsKind) {
    std::vector<Value> values = oneOfEachKind();
    for (Value& value : values) {
        const Kind kind = value.kind();
        value.clear();
        EXPECT_EQ(value, Value(kind));
    }
}

TEST(ValueTest, EqualityComparesKindAndPayload) {
    const std::vector<Value> values = oneOfEachKind();
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            EXPECT_EQ(values[i] == values[j], i == j);
        }
    }
    EXPECT_NE(Value(1), Value(1.0));
    EXPECT_NE(Value(1), Value(2));
    EXPECT_NE(Value(1.0), Value(2.0));
    EXPECT_NE(Value(true), Value(false));
    EXPECT_NE(Value("a"), Value("b"));
    EXPECT_NE(Value(std::nan("")), Value(std::nan("")));
    EXPECT_NE(array({1}), array({1, 2}));
    EXPECT_NE(array({1, 2}), array({2, 1}));
    EXPECT_NE(object({{"a", 1}}), object({{"b", 1}}));
    EXPECT_NE(object({{"a", 1}}), object({{"a", 2}}));
    EXPECT_NE(object({{"a", 1}}), object({{"a", 1}, {"b", 1}}));
}

TEST(ValueTest, DepthDoesNotUseStack) {
    for (const bool withObjects : {false, true}) {
        const int levels = withObjects ? kDeepLevels / 5 : kDeepLevels;
        bool copyIsEqual = false;
        bool nestedCopyIsEqual = true;
        runOnSmallStack([&] {
            const Value value = nested(levels, withObjects);
            Value copy = value;
            copyIsEqual = copy == value;
            copy = array({std::move(copy)});
            nestedCopyIsEqual = copy == value;
        });
        EXPECT_TRUE(copyIsEqual);
        EXPECT_FALSE(nestedCopyIsEqual);
    }
}

TEST(ValueTest, DestructorFreesDeepTree) {
    const AllocationCounter heap;
    {
        Value value = nested(1000, true);
        value.append(nested(1000, false));
        EXPECT_GT(heap.liveBlocks(), 3000);
    }
    EXPECT_EQ(heap.liveBlocks(), 0);
}

TEST(ValueTest, ThreadsDestroyPartsOfOneTree) {
    std::string text = "[";
    for (int i = 0; i < 2000; ++i) {
        text += R"({"name":"a name too long for the small-string buffer","n":[1,2,3]},)";
    }
    text += "null]";
    Value document;
    std::string error;
    ASSERT_TRUE(ravenjson::parse(text, document, error));
    Value part(Kind::Array);
    for (std::size_t i = 0; i < document.array().size(); i += 2) {
        part.append(std::move(document.at(i)));
    }
    std::thread other([moved = std::move(part)]() mutable {
        moved.append(1);
        moved.clear();
    });
    document.at(1)["name"] = 5;
    document.clear();
    other.join();
}

} // namespace
