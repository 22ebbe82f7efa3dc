#pragma once

#include <type_traits>
#include <utility>

namespace zmk {

// Stores a value and an error, one of which is default-constructed. There is no separate flag: the
// result is an error if the code of the stored error is not 0.
template<typename T, typename E>
class ResultBase {
    static constexpr bool kMovesWithoutThrowing =
        std::is_nothrow_move_constructible_v<T> && std::is_nothrow_move_assignable_v<T>;

public:
    // Implicit, so that a function can return either a value or an error.
    ResultBase(T value) : value_(std::move(value)) {}
    ResultBase(const E& error) : error_(error) {}

    ResultBase(const ResultBase&) = default;
    ResultBase(ResultBase&&) noexcept(kMovesWithoutThrowing) = default;
    ResultBase& operator=(const ResultBase&) = default;
    ResultBase& operator=(ResultBase&&) noexcept(kMovesWithoutThrowing) = default;
    virtual ~ResultBase() = default;

    bool isError() const noexcept { return error_.code != 0; }

    // Returns the value, which is default-constructed if isError().
    const T& value() const& { return value_; }
    T value() && { return std::move(value_); }

    const E& error() const { return error_; }

private:
    T value_{};
    E error_{};
};

} // namespace zmk

namespace quorin {

template<typename T, typename E>
class Result : public zmk::ResultBase<T, E> {
public:
    using zmk::ResultBase<T, E>::ResultBase;
};

// Returns the value. Throws a copy of the error if the result is one.
template<typename T, typename E>
T unwrap(Result<T, E> result) {
    if (result.isError()) {
        throw E(result.error());
    }
    return std::move(result).value();
}

} // namespace quorin
