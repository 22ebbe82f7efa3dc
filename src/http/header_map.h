#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace quorin::http {

// The headers of a request or a response, sorted by name in byte order. Names are case-sensitive.
class HeaderMap {
public:
    using Entries = std::map<std::string, std::string>;

    HeaderMap() = default;
    explicit HeaderMap(Entries entries) noexcept : entries_(std::move(entries)) {}

    // Adds a header, or replaces its value if the name already exists.
    void set(std::string_view name, std::string_view value);

    bool contains(std::string_view name) const;

    // Returns a copy of the value. Throws std::out_of_range "<name> does not exist" if there is no
    // such header.
    std::string get(std::string_view name) const;

    const Entries& entries() const noexcept { return entries_; }

    bool operator==(const HeaderMap&) const = default;

private:
    Entries entries_;
};

} // namespace quorin::http
