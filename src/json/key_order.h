#pragma once

#include <string_view>

namespace ravenjson {

// The ascending byte order of member names, which are found by any kind of string.
struct KeyOrder {
    using is_transparent = void;

    bool operator()(std::string_view left, std::string_view right) const noexcept {
        // Names mostly differ in their first byte, which is sooner asked than a library function.
        if (!left.empty() && !right.empty() && left.front() != right.front()) {
            return static_cast<unsigned char>(left.front()) <
                   static_cast<unsigned char>(right.front());
        }
        return left < right;
    }
};

} // namespace ravenjson
