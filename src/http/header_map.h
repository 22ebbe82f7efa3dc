#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace quorin::http {

// The headers of a request or a response, in ascending byte order of their names. Names differ
// when their letter case does.
class HeaderMap {
public:
    using Entries = std::map<std::string, std::string>;

    HeaderMap() = default;
    explicit HeaderMap(Entries entries) noexcept : entries_(std::move(entries)) {}

    // Adds a header, or replaces the value of the one there is.
    void set(std::string_view name, std::string_view value);

    bool contains(std::string_view name) const;

    // A copy of the value; throws std::out_of_range "<name> does not exist" when there is none.
    std::string get(std::string_view name) const;

    const Entries& entries() const noexcept { return entries_; }

    bool operator==(const HeaderMap&) const = default;

private:
    Entries entries_;
};

} // namespace quorin::http
