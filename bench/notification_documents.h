#pragma once

#include <cstddef>
#include <string>

// A notification document of `bytes` bytes (some 700 at least): the three pending items, and the
// history of what was pending before, as long as it takes. Compact, with the members in the order
// of their meaning, not of their names. The same text in every run.
std::string notificationDocument(std::size_t bytes);
