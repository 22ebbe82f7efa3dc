#pragma once

#include <string_view>

namespace ravenjson {

// Orders member names by their bytes, as unsigned values. Transparent: lookup accepts any string
// type that converts to std::string_view.
struct KeyOrder {
    using is_transparent = void;

    bool operator()(std::string_view left, std::string_view right) const noexcept {
        // Most names differ in the first byte; comparing it here avoids a memcmp() call.
        if (!left.empty() && !right.empty() && left.front() != right.front()) {
            return static_cast<unsigned char>(left.front()) <
                   static_cast<unsigned char>(right.front());
        }
        return left < right;
    }
};

} // namespace ravenjson
