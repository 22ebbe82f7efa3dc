#pragma once

#include <type_traits>
#include <utility>

namespace zmk {

// The storage of a result: a value and an error, of which one is default-constructed. There is no
// flag beside them: a result has failed exactly when its error's code is not 0.
template<typename T, typename E>
class ResultBase {
    static constexpr bool kMovesWithoutThrowing =
        std::is_nothrow_move_constructible_v<T> && std::is_nothrow_move_assignable_v<T>;

public:
    // Both are implicit, so that a function returns its value or its error as it stands.
    ResultBase(T value) : value_(std::move(value)) {}
    ResultBase(const E& error) : error_(error) {}

    ResultBase(const ResultBase&) = default;
    ResultBase(ResultBase&&) noexcept(kMovesWithoutThrowing) = default;
    ResultBase& operator=(const ResultBase&) = default;
    ResultBase& operator=(ResultBase&&) noexcept(kMovesWithoutThrowing) = default;
    virtual ~ResultBase() = default;

    bool isError() const noexcept { return error_.code != 0; }

    // The value; a default-constructed one when the result has failed.
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

// The value of a result; throws a copy of its error when it has failed.
template<typename T, typename E>
T unwrap(Result<T, E> result) {
    if (result.isError()) {
        throw E(result.error());
    }
    return std::move(result).value();
}

} // namespace quorin
