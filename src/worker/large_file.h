#pragma once

#include <string_view>

namespace quorin {

// True when `target` names a file of the kinds of which only a few are sent at once: its ending is
// "zip" or "exe" in any letter case. The ending is what follows the last "." of what follows the
// last back-slash; slashes have no part in it.
[[nodiscard]] bool isLargeFile(std::string_view target);

} // namespace quorin
