#include "http/result.h"

#include "http/error.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <type_traits>
#include <vector>

namespace quorin {
namespace {

using Text = Result<std::string, Error>;

TEST(Result, FromValueHasNoError) {
    const Text result(std::string("token"));

    EXPECT_FALSE(result.isError());
    EXPECT_EQ(result.value(), "token");
    EXPECT_EQ(result.error().code, 0);
    EXPECT_EQ(result.error().message, "");
}

TEST(Result, FromErrorHasDefaultValue) {
    const Error error(Error::kMalformed, "why");
    const Text result(error);

    EXPECT_TRUE(result.isError());
    EXPECT_EQ(result.value(), "");
    EXPECT_EQ(result.error().code, Error::kMalformed);
    EXPECT_EQ(result.error().message, "why");
    EXPECT_EQ(error.message, "why") << "the error was moved instead of copied";
}

TEST(Result, IsErrorIfCodeIsNotZero) {
    EXPECT_FALSE(Text(Error(0, "code 0 is not an error")).isError());
    EXPECT_TRUE(Text(Error(1)).isError());
    EXPECT_TRUE(Text(Error(-1)).isError());
}

TEST(Result, MovesValue) {
    std::vector<std::uint8_t> bytes(1000);
    const auto* const memory = bytes.data();

    Result<std::vector<std::uint8_t>, Error> result(std::move(bytes));
    EXPECT_EQ(result.value().data(), memory);

    const auto moved = unwrap(std::move(result));
    EXPECT_EQ(moved.data(), memory);
}

TEST(Result, UnwrapReturnsValue) {
    EXPECT_EQ(unwrap(Text(std::string("token"))), "token");
}

TEST(Result, UnwrapThrowsCopyOfError) {
    const Text result(Error(7, "seven"));
    try {
        unwrap(result);
        FAIL() << "no exception was thrown";
    } catch (const Error& error) {
        EXPECT_EQ(error.code, 7);
        EXPECT_EQ(error.message, "seven");
        EXPECT_NE(&error, &result.error());
    }
}

TEST(Result, BaseDestroysErrorBeforeValue) {
    static std::string order;
    struct Value {
        ~Value() { order += "value "; }
    };
    struct Failure {
        ~Failure() { order += "error "; }
        int code = 1;
    };
    using Base = zmk::ResultBase<Value, Failure>;
    static_assert(std::has_virtual_destructor_v<Base>);
    static_assert(std::is_base_of_v<Base, Result<Value, Failure>>);

    std::unique_ptr<Base> failed = std::make_unique<Result<Value, Failure>>(Failure());
    order.clear();
    failed.reset();

    EXPECT_EQ(order, "error value ");
}

} // namespace
} // namespace quorin
