#pragma once

#include "platform/secret.h"
#include "platform/system_error.h"

#include <cstddef>
#include <optional>
#include <string>

namespace quorin::platform {

struct FileContent {
    SecretBytes bytes;
    bool isWorldReadable = false; // readable by users other than the owner and the group
};

// Reads the file `path`. Returns nothing if it cannot be read, is not a regular file or is larger
// than `maxSize` bytes. The error is a value of errno.
[[nodiscard]] SystemResult<std::optional<FileContent>> readFile(const std::string& path,
                                                                std::size_t maxSize);

} // namespace quorin::platform
