#pragma once

#include <cstddef>
#include <string>

/// A notification document as the facility's services write it: the three pending items, and the
/// history of what was pending before, as long as it takes to make at least `bytes`. Compact, the
/// members in the order of their meaning. Always the same text for the same size.
std::string notificationDocument(std::size_t bytes);
