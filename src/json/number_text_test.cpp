#include "json/number_text.h"

#include "json/testing/german_locale.h"
#include "json/testing/values.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

namespace {

using ravenjson::appendDouble;
using ravenjson::appendInteger;
using ravenjson::toDouble;
using ravenjson::test::kInfinity;

// Compared instead of the value because 0.0 == -0.0.
std::uint64_t bitsOf(double value) {
    return std::bit_cast<std::uint64_t>(value);
}

void expectDouble(const std::string& number, double expected) {
    const std::optional<double> value = toDouble(number);
    ASSERT_TRUE(value.has_value()) << number;
    EXPECT_EQ(bitsOf(*value), bitsOf(expected)) << number.substr(0, 60) << ": " << *value;
}

// Fixed seed: failures are reproducible.
class Random : public std::mt19937_64 {
public:
    explicit Random(result_type seed) : std::mt19937_64(seed) {} // NOLINT(cert-msc51-cpp)
};

// Returns a finite double of any magnitude.
double randomDouble(Random& random) {
    for (;;) {
        const auto value = std::bit_cast<double>(random());
        if (std::isfinite(value)) {
            return value;
        }
    }
}

std::string printfText(double value) {
    std::array<char, 128> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.17g", value);
    return {text.data(), static_cast<std::size_t>(length)};
}

std::string doubleText(double value) {
    std::string text;
    appendDouble(value, text);
    return text;
}

TEST(NumberTextTest, ReadsDoubles) {
    expectDouble("0.1", 0.1);
    expectDouble("-12.5", -12.5);
    expectDouble("1E+5", 100000.0);
    expectDouble("1e-2", 0.01);
    expectDouble("123456789012345678901234567890", 1.2345678901234568e29);
}

TEST(NumberTextTest, ReadsSignedZero) {
    expectDouble("0.0", 0.0);
    expectDouble("-0.0", -0.0);
    expectDouble("0e999999999999999999999", 0.0);
    expectDouble("-0.00e-999999999999999999999", -0.0);
}

TEST(NumberTextTest, OverflowYieldsInfinity) {
    expectDouble("1e309", kInfinity);
    expectDouble("-1e309", -kInfinity);
    expectDouble("1E+400", kInfinity);
    expectDouble("1e99999999999999999999", kInfinity);
    expectDouble("-1e+99999999999999999999", -kInfinity);
    expectDouble("1.7976931348623157e308", DBL_MAX);
    expectDouble("1.7976931348623159e308", kInfinity);
    expectDouble("1" + std::string(400, '0'), kInfinity);
    expectDouble("1" + std::string(400, '0') + ".5e-10", kInfinity);
    expectDouble("0." + std::string(400, '0') + "1e900", kInfinity);
}

TEST(NumberTextTest, UnderflowYieldsZero) {
    expectDouble("1e-400", 0.0);
    expectDouble("-1e-400", -0.0);
    expectDouble("1e-99999999999999999999", 0.0);
    expectDouble("0." + std::string(400, '0') + "1", 0.0);
    expectDouble("-0." + std::string(400, '0') + "1e5", -0.0);
    expectDouble("1" + std::string(400, '0') + "e-900", 0.0);
}

TEST(NumberTextTest, ReadsSubnormals) {
    expectDouble("4.9e-324", DBL_TRUE_MIN);
    expectDouble("-4.9e-324", -DBL_TRUE_MIN);
    expectDouble("2.4703282292062328e-324", DBL_TRUE_MIN);
    expectDouble("2.4703282292062327e-324", 0.0);
    expectDouble("2.2250738585072011e-308", 2.2250738585072011e-308);
}

TEST(NumberTextTest, ExponentOffsetsManyDigits) {
    expectDouble("1" + std::string(400, '0') + "e-400", 1.0);
    expectDouble("0." + std::string(399, '0') + "1e400", 1.0);
}

TEST(NumberTextTest, RejectsInvalidNumbers) {
    EXPECT_FALSE(toDouble(""));
    EXPECT_FALSE(toDouble("-"));
    EXPECT_FALSE(toDouble("x"));
    EXPECT_FALSE(toDouble("1.5x"));
    EXPECT_FALSE(toDouble("1,5"));
    EXPECT_FALSE(toDouble(" 1"));
}

TEST(NumberTextTest, ReadsLikeStrtod) {
    Random random(1);
    for (int i = 0; i < 200'000; ++i) {
        const double value = randomDouble(random);
        std::array<char, 64> text{};
        const int digits = static_cast<int>(random() % 20);
        ASSERT_GT(std::snprintf(text.data(), text.size(), "%.*e", digits, value), 0);
        expectDouble(text.data(), std::strtod(text.data(), nullptr));
    }
}

TEST(NumberTextTest, WritesDoublesLikePrintf) {
    for (const double value :
         {1.0,  -1.0, 0.1,  1.0 / 3, 1e15,    1e16,         1e17,     123456789.0,
          1e-4, 1e-5, 5e-5, DBL_MAX, DBL_MIN, DBL_TRUE_MIN, -DBL_MAX, 9007199254740993.0,
          1e22, 1e23, 0.5,  100.0}) {
        EXPECT_EQ(doubleText(value), printfText(value));
    }
    EXPECT_EQ(doubleText(0.1), "0.10000000000000001");
    EXPECT_EQ(doubleText(1.0), "1");
    EXPECT_EQ(doubleText(1e17), "1e+17");

    Random random(2);
    for (int i = 0; i < 200'000; ++i) {
        const double value = randomDouble(random);
        ASSERT_EQ(doubleText(value), printfText(value));
        const double common = static_cast<double>(random() % 1'000'000'000) / 1000;
        ASSERT_EQ(doubleText(common), printfText(common));
    }
}

TEST(NumberTextTest, DoublesSurviveRoundTrip) {
    Random random(3);
    for (int i = 0; i < 100'000; ++i) {
        const double value = randomDouble(random);
        expectDouble(doubleText(value), value);
    }
}

TEST(NumberTextTest, WritesIntegers) {
    std::string text = "=";
    appendInteger(0, text);
    text += ' ';
    appendInteger(-1, text);
    text += ' ';
    appendInteger(std::numeric_limits<std::int64_t>::max(), text);
    text += ' ';
    appendInteger(std::numeric_limits<std::int64_t>::min(), text);
    EXPECT_EQ(text, "=0 -1 9223372036854775807 -9223372036854775808");
}

TEST(NumberTextTest, IgnoresLocale) {
    const GermanLocale german;
    ASSERT_EQ(printfText(0.5), "0,5") << "the locale has no effect on the C library";
    EXPECT_EQ(doubleText(0.5), "0.5");
    EXPECT_EQ(doubleText(-1234567.25), "-1234567.25");
    expectDouble("0.5", 0.5);
    expectDouble("-1234567.25e2", -123456725.0);
    EXPECT_FALSE(toDouble("0,5"));
    std::string text;
    appendInteger(1234567, text);
    EXPECT_EQ(text, "1234567");
}

} // namespace
