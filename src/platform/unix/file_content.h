#pragma once

#include "platform/secret.h"

#include <cstddef>
#include <optional>
#include <string>

namespace platform {

struct FileContent {
    SecretBytes bytes;
    bool isOpenToAll = false; // users other than the owner and its group may read it
};

// What the file `path` holds. Nothing when it cannot be read, is no regular file or is larger than
// `largestSize` bytes.
[[nodiscard]] std::optional<FileContent> readFile(const std::string& path, std::size_t largestSize);

} // namespace platform
