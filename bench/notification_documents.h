#pragma once

#include <cstddef>
#include <string>

// Returns a notification document of `bytes` bytes, at least about 700: three pending items, then
// history entries up to the size requested. Compact; the members are not sorted by name. The same
// text on every call.
std::string notificationDocument(std::size_t bytes);
