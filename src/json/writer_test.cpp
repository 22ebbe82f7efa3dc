#include "json/writer.h"

#include "json/reader.h"
#include "json/testing/allocation_counter.h"
#include "json/testing/german_locale.h"
#include "json/testing/small_stack.h"
#include "json/testing/values.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace {

using ravenjson::Kind;
using ravenjson::toString;
using ravenjson::Value;
using ravenjson::test::kInfinity;
using ravenjson::test::parsed;

constexpr ravenjson::WriterOptions kTwoSpaces = ravenjson::kPretty;
constexpr ravenjson::WriterOptions kFourSpaces = ravenjson::kPretty | ravenjson::kIndentFourSpaces;
constexpr ravenjson::WriterOptions kTab = ravenjson::kPretty | ravenjson::kIndentTab;

TEST(WriterTest, OptionsHaveFixedCodes) {
    EXPECT_EQ(ravenjson::kPretty, 0x80U);
    EXPECT_EQ(ravenjson::kIndentFourSpaces, 0x01U);
    EXPECT_EQ(ravenjson::kIndentTab, 0x02U);
    EXPECT_EQ(ravenjson::kCrLf, 0x04U);
    static_assert(sizeof(ravenjson::WriterOptions) == 4);
}

TEST(WriterTest, WritesLiterals) {
    EXPECT_EQ(toString(Value()), "null");
    EXPECT_EQ(toString(true), "true");
    EXPECT_EQ(toString(false), "false");
}

TEST(WriterTest, WritesIntegers) {
    EXPECT_EQ(toString(0), "0");
    EXPECT_EQ(toString(-42), "-42");
    EXPECT_EQ(toString(std::numeric_limits<std::int64_t>::max()), "9223372036854775807");
    EXPECT_EQ(toString(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
}

TEST(WriterTest, WritesDoubles) {
    EXPECT_EQ(toString(0.1), "0.10000000000000001");
    EXPECT_EQ(toString(-2.5), "-2.5");
    EXPECT_EQ(toString(1e300), "1.0000000000000001e+300");
    EXPECT_EQ(toString(5e-324), "4.9406564584124654e-324");
    EXPECT_EQ(toString(100000000000000000.0), "1e+17");
}

TEST(WriterTest, WritesWholeDoubleWithoutFraction) {
    EXPECT_EQ(toString(1.0), "1");
    EXPECT_EQ(toString(-3.0), "-3");
    EXPECT_TRUE(parsed(toString(1.0)).isInteger());
}

TEST(WriterTest, WritesZeroWithoutSign) {
    EXPECT_EQ(toString(0.0), "0.0");
    EXPECT_EQ(toString(-0.0), "0.0");
}

TEST(WriterTest, EscapesStrings) {
    EXPECT_EQ(toString("\t\"\x01"), R"("\t\"\u0001")");
    EXPECT_EQ(toString("\b\t\n\f\r\"\\"), R"("\b\t\n\f\r\"\\")");
    EXPECT_EQ(toString("\x7F"), R"("\u007f")");
    EXPECT_EQ(toString("a/b"), R"("a/b")");
    EXPECT_EQ(toString(""), R"("")");
}

TEST(WriterTest, EscapesBytesByTable) {
    for (const std::size_t paddingSize : {0U, 20U}) { // 20: long enough for the SSE2 search
        const std::string padding(paddingSize, 'x');
        for (int byte = 0; byte < 256; ++byte) {
            std::string expected(1, static_cast<char>(byte));
            if (const auto letter = std::string_view("\b\t\n\f\r\"\\").find(expected);
                letter != std::string_view::npos) {
                expected = std::string("\\") + R"(btnfr"\)"[letter];
            } else if (byte < 0x20 || byte == 0x7F) {
                std::array<char, 8> form{};
                ASSERT_EQ(std::snprintf(form.data(), form.size(), "\\u%04x", byte), 6);
                expected = form.data();
            }
            std::string text = padding;
            text += static_cast<char>(byte);
            text += padding;
            std::string written = "\"";
            written.append(padding).append(expected).append(padding).append("\"");
            EXPECT_EQ(toString(text), written) << byte;
            EXPECT_EQ(parsed(toString(text)), Value(text)) << byte;
        }
    }
}

TEST(WriterTest, CompactTextHasNoSpaces) {
    Value value(Kind::Object);
    value["b"] = 2;
    value["a"] = 1;
    EXPECT_EQ(toString(value), R"({"a":1,"b":2})");
    EXPECT_EQ(toString(parsed(R"([ 1, [ ], { "k" : [ null , "x" ] } ])")),
              R"([1,[],{"k":[null,"x"]}])");
}

TEST(WriterTest, EscapesKeys) {
    Value value(Kind::Object);
    value["a\n\""] = true;
    EXPECT_EQ(toString(value), R"({"a\n\"":true})");
}

TEST(WriterTest, WritesEmptyContainersOnOneLine) {
    for (const auto options : {ravenjson::kCompact, kTwoSpaces}) {
        EXPECT_EQ(toString(Value(Kind::Object), options), "{}");
        EXPECT_EQ(toString(Value(Kind::Array), options), "[]");
    }
    EXPECT_EQ(toString(parsed(R"({"a":{},"b":[]})"), kTwoSpaces),
              "{\n  \"a\": {},\n  \"b\": []\n}");
}

TEST(WriterTest, PrettyWritesOneMemberPerLine) {
    EXPECT_EQ(toString(parsed(R"({"b":2,"a":1})"), kFourSpaces),
              "{\n    \"a\": 1,\n    \"b\": 2\n}");
}

TEST(WriterTest, PrettyIndentsByDepth) {
    const Value value = parsed(R"({"a":[1,{"b":null}],"c":"d"})");
    EXPECT_EQ(toString(value, kTwoSpaces),
              "{\n  \"a\": [\n    1,\n    {\n      \"b\": null\n    }\n  ],\n  \"c\": \"d\"\n}");
    EXPECT_EQ(toString(value, kTab),
              "{\n\t\"a\": [\n\t\t1,\n\t\t{\n\t\t\t\"b\": null\n\t\t}\n\t],\n\t\"c\": \"d\"\n}");
}

TEST(WriterTest, BothIndentBitsGiveTwoSpaces) {
    const Value value = parsed("[1]");
    EXPECT_EQ(toString(value, ravenjson::kPretty | 0x03), "[\n  1\n]");
}

TEST(WriterTest, CrLfChangesLineBreak) {
    EXPECT_EQ(toString(parsed("[1,2]"), kTwoSpaces | ravenjson::kCrLf), "[\r\n  1,\r\n  2\r\n]");
}

TEST(WriterTest, CompactIgnoresIndentAndLineBreak) {
    EXPECT_EQ(toString(parsed(R"({"a":[1,2]})"), 0x7F), R"({"a":[1,2]})");
}

TEST(WriterTest, PrettyTextReadsBackEqual) {
    const Value value = parsed(R"({"a":[1,{"b":null,"c":[[],{},"x"]}],"c":"d"})");
    for (const auto options : {kTwoSpaces, kFourSpaces, kTab, kTab | ravenjson::kCrLf}) {
        EXPECT_EQ(parsed(toString(value, options)), value);
    }
}

TEST(WriterTest, AppendsToOutput) {
    std::string output = "data: ";
    std::string error = "none";
    EXPECT_TRUE(ravenjson::write(parsed("[1]"), ravenjson::kCompact, output, error));
    EXPECT_EQ(output, "data: [1]");
    EXPECT_EQ(error, "none");
}

TEST(WriterTest, RejectsInfinityAndNan) {
    const std::pair<double, std::string> cases[] = {
        {std::nan(""), "nan"}, {-std::nan(""), "nan"}, {kInfinity, "inf"}, {-kInfinity, "-inf"}};
    for (const auto& [number, text] : cases) {
        std::string output;
        std::string error;
        EXPECT_FALSE(ravenjson::write(number, ravenjson::kCompact, output, error));
        EXPECT_EQ(output, text);
        EXPECT_EQ(error, "Floating point is nan or inf.");
    }
}

TEST(WriterTest, StopsAtFirstError) {
    Value value(Kind::Array);
    value.append(1);
    value.append(parsed(R"({"a":0,"b":1})"));
    value.at(1)["b"] = -kInfinity;
    value.append(2);
    std::string output;
    std::string error;
    EXPECT_FALSE(ravenjson::write(value, ravenjson::kCompact, output, error));
    EXPECT_EQ(output, R"([1,{"a":0,"b":-inf)");
    EXPECT_EQ(toString(value), R"([1,{"a":0,"b":-inf)") << "toString() does not report the error";
}

TEST(WriterTest, WritesNothingForUnknownKind) {
    std::string output;
    std::string error;
    EXPECT_TRUE(ravenjson::write(Value(Kind(8)), ravenjson::kCompact, output, error));
    EXPECT_EQ(output, "");
    Value value(Kind::Object);
    value["a"] = Value(Kind(8));
    EXPECT_EQ(toString(value), R"({"a":})");
}

TEST(WriterTest, IgnoresLocale) {
    const GermanLocale german;
    EXPECT_EQ(toString(parsed(R"([0.5,-1234567.25,1e-7,1234567])")),
              "[0.5,-1234567.25,9.9999999999999995e-08,1234567]");
}

TEST(WriterTest, DepthDoesNotUseStack) {
    constexpr std::size_t kLevels = 1'000'000;
    std::string written;
    runOnSmallStack([&] {
        Value value = "core";
        for (std::size_t i = 0; i < kLevels; ++i) {
            Value outer(Kind::Array);
            outer.append(std::move(value));
            value = std::move(outer);
        }
        written = toString(value);
    });
    EXPECT_EQ(written, std::string(kLevels, '[') + "\"core\"" + std::string(kLevels, ']'));
}

TEST(WriterTest, AllocatesOnlyForOpenContainers) {
    const Value value = parsed(R"({"a":["text \n more text, and more still",0.1,12345],"b":{}})");
    std::string output;
    std::string error;
    output.reserve(1000);
    const AllocationCounter heap;
    EXPECT_TRUE(ravenjson::write(value, ravenjson::kCompact, output, error));
    EXPECT_LE(heap.allocations(), 3U) << "one growing stack of open containers";
}

} // namespace
