#include "json/reader.h"

#include "json/testing/allocation_counter.h"
#include "json/testing/german_locale.h"
#include "json/testing/small_stack.h"
#include "json/testing/values.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <ostream>
#include <vector>

namespace {

using namespace std::string_literals;
using ravenjson::Kind;
using ravenjson::Value;
using ravenjson::test::kInfinity;
using ravenjson::test::parsed;

constexpr std::size_t kManyLevels = 1'000'000;

// Records the events as text. Cancels at the event with index `cancelAt`.
class Recorder : public ravenjson::Handler {
public:
    explicit Recorder(std::size_t cancelAt = std::string::npos) : cancelAt_(cancelAt) {}

    [[nodiscard]] const std::string& events() const { return events_; }
    [[nodiscard]] std::size_t count() const { return count_; }

    bool null() override { return record("null"); }
    bool boolean(bool value) override { return record(value ? "true" : "false"); }
    bool integer(std::int64_t value) override { return record('i' + std::to_string(value)); }
    bool floating(double value) override { return record('d' + std::to_string(value)); }
    bool string(std::string_view text) override { return record('"' + std::string(text) + '"'); }
    bool startArray() override { return record("["); }
    bool endArray() override { return record("]"); }
    bool startObject() override { return record("{"); }
    bool key(std::string_view text) override { return record(std::string(text) + ':'); }
    bool endObject() override { return record("}"); }

private:
    bool record(const std::string& event) {
        events_ += event + ' ';
        return count_++ != cancelAt_;
    }

    const std::size_t cancelAt_;
    std::size_t count_ = 0;
    std::string events_;
};

// Returns the error of parse(), after checking that parseValue() and skipValue() report the same.
std::string errorOf(std::string_view text) {
    Value value;
    std::string error;
    EXPECT_FALSE(ravenjson::parse(text, value, error)) << text.substr(0, 80);

    const char* const end = text.data() + text.size();
    Recorder recorder;
    std::string eventError;
    const char* position = text.data();
    EXPECT_FALSE(ravenjson::parseValue(position, end, recorder, eventError));
    EXPECT_EQ(eventError, error);

    std::string skipError;
    const char* skipPosition = text.data();
    EXPECT_FALSE(ravenjson::skipValue(skipPosition, end, skipError));
    EXPECT_EQ(skipError, error);
    EXPECT_EQ(skipPosition, position);
    return error;
}

std::string eventsOf(std::string_view text) {
    Recorder recorder;
    std::string error;
    const char* position = text.data();
    EXPECT_TRUE(ravenjson::parseValue(position, text.data() + text.size(), recorder, error))
        << error;
    return recorder.events();
}

std::string jsonString(std::string_view inner) {
    return '"' + std::string(inner) + '"';
}

// --- documents ---------------------------------------------------------------------------------

TEST(ReaderTest, ReadsEachKind) {
    EXPECT_TRUE(parsed("null").isNull());
    EXPECT_EQ(parsed("true"), Value(true));
    EXPECT_EQ(parsed("false"), Value(false));
    EXPECT_EQ(parsed("12"), Value(12));
    EXPECT_EQ(parsed("1.5"), Value(1.5));
    EXPECT_EQ(parsed(R"("text")"), Value("text"));
    EXPECT_EQ(parsed("[]"), Value(Kind::Array));
    EXPECT_EQ(parsed("{}"), Value(Kind::Object));
}

TEST(ReaderTest, ReadsNestedValues) {
    const Value value = parsed(R"({"b":[1,2.5,"x",null,[],{}],"a":{"k":true,"l":[[false]]}})");
    ASSERT_TRUE(value.isObject());
    EXPECT_EQ(value.object().begin()->first, "a") << "members are sorted by key";
    const Value& list = *value.find("b");
    ASSERT_EQ(list.array().size(), 6U);
    EXPECT_EQ(list.at(0), Value(1));
    EXPECT_EQ(list.at(1), Value(2.5));
    EXPECT_EQ(list.at(2), Value("x"));
    EXPECT_TRUE(list.at(3).isNull());
    EXPECT_EQ(list.at(4), Value(Kind::Array));
    EXPECT_EQ(list.at(5), Value(Kind::Object));
    EXPECT_EQ(*value.find("a")->find("k"), Value(true));
    EXPECT_EQ(value.find("a")->find("l")->at(0).at(0), Value(false));
}

TEST(ReaderTest, ReturnsToOuterContainer) {
    EXPECT_EQ(eventsOf(R"([[1],2,{"a":[3],"b":4},5])"), "[ [ i1 ] i2 { a: [ i3 ] b: i4 } i5 ] ");
    const Value value = parsed(R"([[1],2,{"a":[3],"b":{"c":4},"d":5},6])");
    ASSERT_EQ(value.array().size(), 4U);
    EXPECT_EQ(value.at(1), Value(2));
    EXPECT_EQ(value.at(2).object().size(), 3U);
    EXPECT_EQ(*value.at(2).find("d"), Value(5));
    EXPECT_EQ(value.at(3), Value(6));
}

TEST(ReaderTest, RepeatedKeyKeepsLastValue) {
    EXPECT_EQ(parsed(R"({"a":1,"b":2,"a":3})"), parsed(R"({"a":3,"b":2})"));
    EXPECT_EQ(parsed(R"({"a":[1,2],"a":{"x":1}})"), parsed(R"({"a":{"x":1}})"));
    EXPECT_EQ(parsed(R"({"a":{"x":1},"a":{"y":2}})"), parsed(R"({"a":{"y":2}})"));
    EXPECT_EQ(parsed(R"({"\u0061":1,"a":2})"), parsed(R"({"a":2})"));
    EXPECT_EQ(eventsOf(R"({"a":1,"a":2})"), "{ a: i1 a: i2 } ") << "a handler receives both";
}

TEST(ReaderTest, AcceptsExactlyFourWhitespaceBytes) {
    EXPECT_EQ(parsed(" \t\n\r{ \t\n\r\"a\" \t\n\r: \t\n\r[ \t\n\r1 \t\n\r, 2 ] \t\n\r} \r\n"),
              parsed(R"({"a":[1,2]})"));
    EXPECT_EQ(parsed("  {  }  \r\n"), Value(Kind::Object));
    EXPECT_EQ(parsed(" [ ] "), Value(Kind::Array));
    for (const char other : {'\v', '\f', '\0', '\b', '\x1F', '\x7F', '\xA0', '\x85'}) {
        EXPECT_EQ(errorOf(std::string(1, other) + "1"),
                  "Unexpected character exists while parsing.");
    }
    EXPECT_EQ(errorOf("\xEF\xBB\xBF{}"), "Unexpected character exists while parsing.")
        << "a byte order mark is not whitespace";
}

TEST(ReaderTest, RejectsTrailingText) {
    for (const std::string_view text : {"true false", "{}{}", "1 2", "[]]", "truex", "nullnull",
                                        "1x", "1.5.5", "\"a\"b", "{},"}) {
        Value value;
        std::string error;
        EXPECT_FALSE(ravenjson::parse(text, value, error)) << text;
        EXPECT_EQ(error, "Gabage string exists after json string.") << text;
    }
    Value value;
    std::string error;
    EXPECT_FALSE(ravenjson::parse("1\0"s, value, error));
    EXPECT_EQ(error, "Gabage string exists after json string.");
}

TEST(ReaderTest, ErrorLeavesValueUnchanged) {
    Value value = "before";
    std::string error;
    EXPECT_FALSE(ravenjson::parse("[1,2", value, error));
    EXPECT_EQ(value, Value("before"));
}

TEST(ReaderTest, SuccessSetsValueAndKeepsError) {
    Value value = "before";
    std::string error = "untouched";
    EXPECT_TRUE(ravenjson::parse("[1]", value, error));
    EXPECT_EQ(value, parsed("[1]"));
    EXPECT_EQ(error, "untouched");
}

TEST(ReaderTest, ParsesTextStoredInTheValue) {
    Value value(Kind::Array);
    value.append(R"({"inner":"a text that is not short"})");
    std::string error;
    EXPECT_TRUE(ravenjson::parse(value.at(0).string(), value, error));
    EXPECT_EQ(value, parsed(R"({"inner":"a text that is not short"})"));
}

// --- errors ------------------------------------------------------------------------------------

struct ErrorCase {
    std::string text;
    std::string error;

    friend std::ostream& operator<<(std::ostream& out, const ErrorCase& errorCase) {
        return out << errorCase.text;
    }
};

class ReaderErrorTest : public testing::TestWithParam<ErrorCase> {};

TEST_P(ReaderErrorTest, AllModesReportTheSameError) {
    const auto& [text, error] = GetParam();
    EXPECT_EQ(errorOf(text), error);
    EXPECT_EQ(errorOf(" \t" + text), error);
}

constexpr const char* kCharacter = "Unexpected character exists while parsing.";
INSTANTIATE_TEST_SUITE_P(
    Values, ReaderErrorTest,
    testing::ValuesIn(std::vector<ErrorCase>{
        {"", kCharacter},        {"x", kCharacter},        {"]", kCharacter},
        {"}", kCharacter},       {",", kCharacter},        {":", kCharacter},
        {"+1", kCharacter},      {".5", kCharacter},       {"'a'", kCharacter},
        {"NaN", kCharacter},     {"True", kCharacter},     {"[,", kCharacter},
        {"[", kCharacter},       {"[1,", kCharacter},      {"[1,,2]", kCharacter},
        {"{\"a\":", kCharacter}, {"{\"a\":}", kCharacter}, {"{\"a\":,", kCharacter},
        {"[}", kCharacter},      {"//", kCharacter}}));

constexpr const char* kBoolean = "Invalid boolean type string exists.";
constexpr const char* kNull = "Invalid null type string exists.";
INSTANTIATE_TEST_SUITE_P(Literals, ReaderErrorTest,
                         testing::ValuesIn(std::vector<ErrorCase>{{"t", kBoolean},
                                                                  {"tr", kBoolean},
                                                                  {"tru", kBoolean},
                                                                  {"trux", kBoolean},
                                                                  {"tRUE", kBoolean},
                                                                  {"f", kBoolean},
                                                                  {"fals", kBoolean},
                                                                  {"falsy", kBoolean},
                                                                  {"f alse", kBoolean},
                                                                  {"n", kNull},
                                                                  {"nul", kNull},
                                                                  {"nulL", kNull},
                                                                  {"nil", kNull},
                                                                  {"[nul]", kNull}}));

constexpr const char* kZero = "Unexpected '0' character is found while parsing number.";
constexpr const char* kDigit = "Digit is not found while parsing number.";
constexpr const char* kFraction =
    "Digit is not found after the decimal point while parsing number.";
constexpr const char* kExponent = "Digit is not found after exponent keyword while parsing number.";
INSTANTIATE_TEST_SUITE_P(Numbers, ReaderErrorTest,
                         testing::ValuesIn(std::vector<ErrorCase>{
                             {"01", kZero},
                             {"00", kZero},
                             {"-01", kZero},
                             {"-00.5", kZero},
                             {"[00]", kZero},
                             {"-", kDigit},
                             {"-x", kDigit},
                             {"--1", kDigit},
                             {"-.5", kDigit},
                             {"- 1", kDigit},
                             {"[-]", kDigit},
                             {"-e5", kDigit},
                             {"1.", kFraction},
                             {"1.x", kFraction},
                             {"1.e5", kFraction},
                             {"0.", kFraction},
                             {"-1.-", kFraction},
                             {"[1.,2]", kFraction},
                             {"99999999999999999999.", kFraction},
                             {"1e", kExponent},
                             {"1E", kExponent},
                             {"1e+", kExponent},
                             {"1e-", kExponent},
                             {"1.5ex", kExponent},
                             {"1e+-1", kExponent},
                             {"0e.", kExponent}}));

constexpr const char* kEscape = "Unexpected escape character is found while parsing string.";
constexpr const char* kHex = "Invalid unicode hex string is found while parsing string.";
constexpr const char* kSurrogate = "Invalid unicode surrogate pair is found while parsing string.";
constexpr const char* kStringEnd = "Expected string ending character '\"' is not found.";
INSTANTIATE_TEST_SUITE_P(Strings, ReaderErrorTest,
                         testing::ValuesIn(std::vector<ErrorCase>{
                             {R"("\x")", kEscape},
                             {R"("\a")", kEscape},
                             {R"("\v")", kEscape},
                             {R"("\'")", kEscape},
                             {R"("\0")", kEscape},
                             {R"("\U0041")", kEscape},
                             {R"("\N")", kEscape},
                             {"\"\\\n\"", kEscape},
                             {"\"\\\0\""s, kEscape},
                             {R"("ok \\ then \q")", kEscape},
                             {R"("\u")", kHex},
                             {R"("\u1")", kHex},
                             {R"("\u12")", kHex},
                             {R"("\u123")", kHex},
                             {R"("\u123g")", kHex},
                             {R"("\u 123")", kHex},
                             {R"("\u-123")", kHex},
                             {R"("\u0x41")", kHex},
                             {R"("\u12)", kHex},
                             {R"("\u)", kHex},
                             {R"("\u00:0")", kHex},
                             {R"("\u00@0")", kHex},
                             {R"("\u00G0")", kHex},
                             {R"("\u00`0")", kHex},
                             {R"("\u00/0")", kHex},
                             {R"("\uD83D")", kSurrogate},
                             {R"("\uD83D)", kSurrogate},
                             {R"("\uD83Dx")", kSurrogate},
                             {R"("\uD83D\n")", kSurrogate},
                             {R"("\uD83D \uDE00")", kSurrogate},
                             {R"("\uD83D\u0041")", kSurrogate},
                             {R"("\uD83D\uD83D")", kSurrogate},
                             {R"("\uD83D\uE000")", kSurrogate},
                             {R"("\uD83D\uDBFF")", kSurrogate},
                             {R"("\uDE00")", kSurrogate},
                             {R"("\uDC00")", kSurrogate},
                             {R"("\uDFFF\uDC00")", kSurrogate},
                             {R"("\uD83D\)", kSurrogate},
                             {R"("\uD83D\u)", kSurrogate},
                             {R"("\uD83D\uDE0")", kSurrogate},
                             {R"("\uD83D\uZZZZ")", kSurrogate},
                             {"\"", kStringEnd},
                             {"\"abc", kStringEnd},
                             {"\"abc\\\"", kStringEnd},
                             {"\"\\", kStringEnd},
                             {"\"abc\\n", kStringEnd},
                             {"[\"a", kStringEnd},
                             {"{\"a", kStringEnd},
                             {"\"" + std::string(100, 'x'), kStringEnd}}));

constexpr const char* kArrayComma = "Unexpected comma exists while parsing array.";
constexpr const char* kArrayText = "Unexpected string exists while parsing array.";
INSTANTIATE_TEST_SUITE_P(Arrays, ReaderErrorTest,
                         testing::ValuesIn(std::vector<ErrorCase>{{"[1,2,]", kArrayComma},
                                                                  {"[1,]", kArrayComma},
                                                                  {"[1 , ]", kArrayComma},
                                                                  {"[[],]", kArrayComma},
                                                                  {"[[1,],2]", kArrayComma},
                                                                  {"{\"a\":[1,]}", kArrayComma},
                                                                  {"[1", kArrayText},
                                                                  {"[1 2]", kArrayText},
                                                                  {"[1:2]", kArrayText},
                                                                  {"[1}", kArrayText},
                                                                  {"[truex]", kArrayText},
                                                                  {"[1;2]", kArrayText},
                                                                  {"[\"a\" \"b\"]", kArrayText},
                                                                  {"[[1]", kArrayText},
                                                                  {"[{}", kArrayText},
                                                                  {"[1\0]"s, kArrayText}}));

constexpr const char* kObjectComma = "Unexpected comma exists while parsing object.";
constexpr const char* kObjectText = "Unexpected string exists while parsing object.";
INSTANTIATE_TEST_SUITE_P(Objects, ReaderErrorTest,
                         testing::ValuesIn(std::vector<ErrorCase>{
                             {R"({"a":1,})", kObjectComma},
                             {R"({"a":1, })", kObjectComma},
                             {R"({"a":1,"b":2,})", kObjectComma},
                             {R"([{"a":{},}])", kObjectComma},
                             {R"({"a"})", kObjectText},
                             {R"({"a" 1})", kObjectText},
                             {R"({"a",1})", kObjectText},
                             {R"({"a")", kObjectText},
                             {R"({"a"=1})", kObjectText},
                             {R"({"a":1)", kObjectText},
                             {R"({"a":1]})", kObjectText},
                             {R"({"a":1 "b":2})", kObjectText},
                             {R"({"a":1:2})", kObjectText},
                             {R"({"a":truee})", kObjectText},
                             {"{", kStringEnd},
                             {"{,", kStringEnd},
                             {"{1:2}", kStringEnd},
                             {"{a:1}", kStringEnd},
                             {"{'a':1}", kStringEnd},
                             {"{\"a\":1,", kStringEnd},
                             {"{\"a\":1,b}", kStringEnd},
                             {"{null:1}", kStringEnd},
                             {R"({"a\q":1})", kEscape},
                             {R"({"\uDE00":1})", kSurrogate}}));

// --- numbers -----------------------------------------------------------------------------------

TEST(ReaderNumberTest, ReadsIntegers) {
    EXPECT_EQ(parsed("0"), Value(0));
    EXPECT_EQ(parsed("-0"), Value(0));
    EXPECT_EQ(parsed("7"), Value(7));
    EXPECT_EQ(parsed("-1234567890"), Value(-1234567890));
    EXPECT_EQ(parsed("999999999999999999"), Value(999999999999999999));
    EXPECT_EQ(parsed("9223372036854775807"), Value(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(parsed("-9223372036854775807"), Value(-9223372036854775807));
}

TEST(ReaderNumberTest, DigitAboveSevenAtBoundYieldsDouble) {
    EXPECT_EQ(parsed("9223372036854775808"), Value(9223372036854775808.0));
    EXPECT_EQ(parsed("9223372036854775809"), Value(9223372036854775809.0));
    EXPECT_EQ(parsed("-9223372036854775808"), Value(-9223372036854775808.0));
    EXPECT_EQ(parsed("9999999999999999999"), Value(9999999999999999999.0));
    EXPECT_EQ(parsed("9999999999999999998"), Value(9999999999999999998.0));
    EXPECT_EQ(parsed("92233720368547758080"), Value(92233720368547758080.0))
        << "later digits do not turn it into an integer";
    EXPECT_EQ(parsed("12345678901234567898"), Value(12345678901234567898.0));
}

TEST(ReaderNumberTest, OtherDigitsAtBoundWrap) {
    // The results are modulo 2^64.
    EXPECT_EQ(parsed("9223372036854775810"), Value(-9223372036854775806));
    EXPECT_EQ(parsed("9999999999999999997"), Value(-8446744073709551619));
    EXPECT_EQ(parsed("-9999999999999999997"), Value(8446744073709551619));
    EXPECT_EQ(parsed("12345678901234567890"), Value(-6101065172474983726));
    EXPECT_EQ(parsed("18446744073709551617"), Value(1));
    EXPECT_EQ(parsed("18446744073709551616"), Value(0));
    // A sum that wrapped to a negative value is below the bound, so any digit is added.
    EXPECT_EQ(parsed("99999999999999999979"), Value(7766279631452241899));
    EXPECT_EQ(parsed("-99999999999999999979"), Value(-7766279631452241899));
    // The minimum, which negation leaves unchanged.
    EXPECT_EQ(parsed("27670116110564327424"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(parsed("-27670116110564327424"), Value(std::numeric_limits<std::int64_t>::min()));
}

TEST(ReaderNumberTest, FractionOrExponentYieldsDouble) {
    EXPECT_EQ(parsed("1.0"), Value(1.0));
    EXPECT_EQ(parsed("0.1"), Value(0.1));
    EXPECT_EQ(parsed("-12.625"), Value(-12.625));
    EXPECT_EQ(parsed("1E+5"), Value(100000.0));
    EXPECT_EQ(parsed("1e5"), Value(100000.0));
    EXPECT_EQ(parsed("125e-3"), Value(0.125));
    EXPECT_EQ(parsed("0e1"), Value(0.0));
    EXPECT_EQ(parsed("9223372036854775807.0"), Value(9223372036854775807.0));
    EXPECT_EQ(parsed("99999999999999999999e-1"), Value(9999999999999999999.9));
}

TEST(ReaderNumberTest, AcceptsLeadingZerosInExponent) {
    EXPECT_EQ(parsed("1e007"), Value(1e7));
    EXPECT_EQ(parsed("1e-002"), Value(0.01));
}

TEST(ReaderNumberTest, NegativeZeroDoubleKeepsSign) {
    EXPECT_TRUE(std::signbit(parsed("-0.0").floating()));
    EXPECT_TRUE(std::signbit(parsed("-0e5").floating()));
}

TEST(ReaderNumberTest, AcceptsDoublesOutOfRange) {
    EXPECT_EQ(parsed("1e400"), Value(kInfinity));
    EXPECT_EQ(parsed("-1e400"), Value(-kInfinity));
    EXPECT_EQ(parsed("9" + std::string(400, '9')), Value(kInfinity));
    EXPECT_EQ(parsed("1e-400"), Value(0.0));
    EXPECT_EQ(parsed("4.9e-324"), Value(std::numeric_limits<double>::denorm_min()));
}

TEST(ReaderNumberTest, NumberEndsAfterItsLastDigit) {
    EXPECT_EQ(eventsOf("[1,-2.5,3]"), "[ i1 d-2.500000 i3 ] ");
    const std::string text = "12";
    const char* position = text.data();
    Recorder recorder;
    std::string error;
    EXPECT_TRUE(ravenjson::parseValue(position, position + 1, recorder, error));
    EXPECT_EQ(recorder.events(), "i1 ") << "the second digit is beyond the end";
    position = text.data();
    const std::string zero = "01";
    position = zero.data();
    EXPECT_TRUE(ravenjson::skipValue(position, position + 1, error));
}

TEST(ReaderNumberTest, IgnoresLocale) {
    const GermanLocale german;
    EXPECT_EQ(parsed("[0.5,-1234567.25,1e-2,1234567]"),
              parsed("[5e-1,-123456725e-2,0.01,1234567]"));
    EXPECT_EQ(parsed("0.5").floating(), 0.5);
    Value value;
    std::string error;
    EXPECT_FALSE(ravenjson::parse("0,5", value, error));
}

// --- strings -----------------------------------------------------------------------------------

TEST(ReaderStringTest, CopiesBytesUnchanged) {
    for (const std::size_t paddingSize : {0U, 20U}) { // 20: long enough for the SSE2 search
        const std::string padding(paddingSize, 'x');
        for (int byte = 0; byte < 256; ++byte) {
            if (byte != '"' && byte != '\\') {
                std::string text = padding;
                text += static_cast<char>(byte);
                text += padding;
                EXPECT_EQ(parsed(jsonString(text)), Value(text)) << byte;
            }
        }
    }
    EXPECT_EQ(parsed(jsonString("\xFF\xC0 not UTF-8")), Value("\xFF\xC0 not UTF-8"));
}

TEST(ReaderStringTest, ResolvesEscapes) {
    EXPECT_EQ(parsed(R"("\"\\\/\b\f\n\r\t")"), Value("\"\\/\b\f\n\r\t"));
    EXPECT_EQ(parsed(R"("a\nb")"), Value("a\nb"));
    EXPECT_EQ(parsed(R"("\n")"), Value("\n"));
    const std::string longText(50, 'x');
    EXPECT_EQ(parsed(jsonString(longText + "\\t" + longText + "\\\\" + longText)),
              Value(longText + '\t' + longText + '\\' + longText));
}

TEST(ReaderStringTest, EncodesCodePointsAsUtf8) {
    EXPECT_EQ(parsed(R"("\u0041")"), Value("A"));
    EXPECT_EQ(parsed(R"("\u007f")"), Value("\x7F"));
    EXPECT_EQ(parsed(R"("\u0080")"), Value("\xC2\x80"));
    EXPECT_EQ(parsed(R"("\u00e4\u00E4")"), Value("\xC3\xA4\xC3\xA4"));
    EXPECT_EQ(parsed(R"("\u07FF")"), Value("\xDF\xBF"));
    EXPECT_EQ(parsed(R"("\u0800")"), Value("\xE0\xA0\x80"));
    EXPECT_EQ(parsed(R"("\u20aC")"), Value("\xE2\x82\xAC"));
    EXPECT_EQ(parsed(R"("\uD7FF")"), Value("\xED\x9F\xBF"));
    EXPECT_EQ(parsed(R"("\uE000")"), Value("\xEE\x80\x80"));
    EXPECT_EQ(parsed(R"("\uFFFF")"), Value("\xEF\xBF\xBF"));
}

TEST(ReaderStringTest, CombinesSurrogatePairs) {
    EXPECT_EQ(parsed(R"("\uD83D\uDE00")"), Value("\xF0\x9F\x98\x80"));
    EXPECT_EQ(parsed(R"("\ud800\udc00")"), Value("\xF0\x90\x80\x80"));
    EXPECT_EQ(parsed(R"("\uDBFF\uDFFF")"), Value("\xF4\x8F\xBF\xBF"));
    EXPECT_EQ(parsed(R"("a\uD83D\uDE00b")"), Value("a\xF0\x9F\x98\x80"
                                                   "b"));
}

TEST(ReaderStringTest, AcceptsEscapedNul) {
    EXPECT_EQ(parsed(R"("a\u0000b")"), Value("a\0b"s));
    EXPECT_EQ(parsed(R"({"\u0000":1})").object().begin()->first, std::string_view("\0", 1));
}

TEST(ReaderStringTest, ReadsKeysLikeStrings) {
    EXPECT_EQ(parsed(R"({"a\n\u00e4":1})").object().begin()->first, "a\n\xC3\xA4");
    EXPECT_EQ(parsed(R"({"":1})").object().begin()->first, "");
    const std::string longKey(100, 'k');
    EXPECT_EQ(parsed('{' + jsonString(longKey) + ":1}").object().begin()->first,
              std::string_view(longKey));
}

// --- events ------------------------------------------------------------------------------------

TEST(ReaderEventTest, ReportsEventsInDocumentOrder) {
    EXPECT_EQ(eventsOf(R"({"b":[null,true,false,1,2.5,"x\n"],"a":{}})"),
              "{ b: [ null true false i1 d2.500000 \"x\n\" ] a: { } } ");
    EXPECT_EQ(eventsOf("[]"), "[ ] ");
    EXPECT_EQ(eventsOf("{}"), "{ } ");
    EXPECT_EQ(eventsOf("[[],[{}]]"), "[ [ ] [ { } ] ] ");
}

TEST(ReaderEventTest, StopsAfterOneValue) {
    const std::string text = "  [1] true, \"x\"";
    const char* position = text.data();
    const char* const end = position + text.size();
    Recorder recorder;
    std::string error;
    EXPECT_TRUE(ravenjson::parseValue(position, end, recorder, error));
    EXPECT_EQ(position - text.data(), 5);
    EXPECT_TRUE(ravenjson::parseValue(position, end, recorder, error));
    EXPECT_EQ(position - text.data(), 10) << "skips whitespace before the value, not after it";
    EXPECT_EQ(recorder.events(), "[ i1 ] true ");
    EXPECT_EQ(error, "");
}

TEST(ReaderEventTest, IgnoresByteAfterLiteral) {
    const std::string text = "truefalse";
    const char* position = text.data();
    Recorder recorder;
    std::string error;
    EXPECT_TRUE(ravenjson::parseValue(position, position + text.size(), recorder, error));
    EXPECT_EQ(position - text.data(), 4);
}

TEST(ReaderEventTest, HandlerCancelsAtAnyEvent) {
    const std::string text = R"({"b":[null,true,1,2.5,"x","\n",[]],"\t":{}})";
    const char* const end = text.data() + text.size();
    std::string error;
    Recorder all;
    const char* position = text.data();
    ASSERT_TRUE(ravenjson::parseValue(position, end, all, error));
    ASSERT_EQ(all.count(), 16U);
    for (std::size_t event = 0; event < all.count(); ++event) {
        Recorder recorder(event);
        position = text.data();
        error.clear();
        EXPECT_FALSE(ravenjson::parseValue(position, end, recorder, error));
        EXPECT_EQ(error, "SAX handler cancels parsing.");
        EXPECT_EQ(recorder.count(), event + 1) << "no event follows";
        EXPECT_EQ(all.events().substr(0, recorder.events().size()), recorder.events());
    }
}

TEST(ReaderEventTest, ReportsEventsBeforeAnError) {
    Recorder recorder;
    std::string error;
    const std::string text = R"({"a":[1,2)";
    const char* position = text.data();
    EXPECT_FALSE(ravenjson::parseValue(position, position + text.size(), recorder, error));
    EXPECT_EQ(recorder.events(), "{ a: [ i1 i2 ");
}

// --- skipping ----------------------------------------------------------------------------------

TEST(ReaderSkipTest, StopsAfterTheValue) {
    const std::string text = R"( {"a\n":[1,2.5,"x\n\uD83D\uDE00",null,true,false,{}]} tail)";
    const char* position = text.data();
    std::string error;
    EXPECT_TRUE(ravenjson::skipValue(position, position + text.size(), error));
    EXPECT_EQ(std::string(position, text.data() + text.size()), " tail");
    EXPECT_EQ(error, "");
}

// --- allocations -------------------------------------------------------------------------------

TEST(ReaderAllocationTest, CopiesStringOnce) {
    const std::string text = jsonString(std::string(1'000'000, 'x'));
    Value value;
    std::string error;
    const AllocationCounter heap;
    ASSERT_TRUE(ravenjson::parse(text, value, error));
    EXPECT_LT(heap.allocatedBytes(), 1'100'000U);
}

TEST(ReaderAllocationTest, PassesHandlerViewsOfTheInput) {
    class LengthCounter : public Recorder {
        bool string(std::string_view text) override {
            length += text.size();
            return true;
        }
        bool key(std::string_view text) override { return string(text); }

    public:
        std::size_t length = 0;
    } handler;
    const std::string longText(100'000, 'x');
    const std::string text = '{' + jsonString(longText) + ':' + jsonString(longText) + '}';
    const char* position = text.data();
    std::string error;
    const AllocationCounter heap;
    ASSERT_TRUE(ravenjson::parseValue(position, position + text.size(), handler, error));
    EXPECT_EQ(handler.length, 2 * longText.size());
    EXPECT_LT(heap.allocatedBytes(), 1000U);
}

TEST(ReaderAllocationTest, SkippingDoesNotAllocate) {
    const std::string text = R"({"a":["text with \n \t escapes, longer than a short one",12.5]})";
    const char* position = text.data();
    std::string error;
    const AllocationCounter heap;
    ASSERT_TRUE(ravenjson::skipValue(position, position + text.size(), error));
    EXPECT_EQ(heap.allocations(), 0U);
}

TEST(ReaderAllocationTest, ErrorFreesPartialTree) {
    Value value;
    std::string error(200, 'x');
    const AllocationCounter heap;
    EXPECT_FALSE(
        ravenjson::parse(R"({"a":[1,{"long":"a text that is not at all short"},)", value, error));
    EXPECT_EQ(heap.liveBlocks(), 0);
}

// --- depth -------------------------------------------------------------------------------------

TEST(ReaderDepthTest, RejectsMillionOpenBrackets) {
    const std::string text(kManyLevels, '[');
    runOnSmallStack([&] { EXPECT_EQ(errorOf(text), kCharacter); });
}

TEST(ReaderDepthTest, ReadsMillionNestedArrays) {
    const std::string text = std::string(kManyLevels, '[') + std::string(kManyLevels, ']');
    runOnSmallStack([&] {
        const Value value = parsed(text);
        std::size_t levels = 1;
        for (const Value* inner = &value; !inner->array().empty(); inner = &inner->at(0)) {
            ++levels;
        }
        EXPECT_EQ(levels, kManyLevels);
    });
}

TEST(ReaderDepthTest, ReadsMillionNestedObjects) {
    std::string text;
    for (std::size_t i = 0; i < kManyLevels; ++i) {
        text += R"({"a":)";
    }
    runOnSmallStack([&] {
        EXPECT_EQ(errorOf(text), kCharacter);
        text += "1" + std::string(kManyLevels, '}');
        const Value value = parsed(text);
        const char* position = text.data();
        std::string error;
        EXPECT_TRUE(ravenjson::skipValue(position, position + text.size(), error));
    });
}

TEST(ReaderDepthTest, RepeatedKeyReplacesDeepValue) {
    const std::string deep = std::string(kManyLevels, '[') + std::string(kManyLevels, ']');
    runOnSmallStack(
        [&] { EXPECT_EQ(parsed(R"({"a":)" + deep + R"(,"a":1})"), parsed(R"({"a":1})")); });
}

} // namespace
