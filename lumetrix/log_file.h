#pragma once

#include <spdlog/sinks/sink.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

namespace lumetrix {

// When to start a new log file and how many to keep.
struct Rotation {
    int filesKept = 0;                   // including the current one; see openLogFile
    std::optional<std::size_t> maxBytes; // file size limit; no value: rotate by date
};

// Opens the log file for appending and returns a sink that writes to it and rotates it. Creates
// `directory` if it is missing.
//  - By date: writes to BASE_YYYY-MM-DD.log and starts a new file with the first message after
//    midnight, local time. Whenever a file is opened, removes all but the newest `filesKept` files;
//    ignores files that cannot be removed. Keeps all files if `filesKept` is below 1.
//  - By size: writes to BASE.log; older files are BASE.1.log (the newest), BASE.2.log and so on.
//    `filesKept` is clamped to 1..200000.
//
// If an existing file ends in an incomplete line (after a power failure or on a full disk), a line
// end is written first. Throws a std::exception if the file cannot be opened. log() and flush() of
// the sink throw one if the file cannot be written. The sink is not thread-safe.
std::shared_ptr<spdlog::sinks::sink> openLogFile(const std::filesystem::path& directory,
                                                 const std::filesystem::path& baseName,
                                                 const Rotation& rotation);

} // namespace lumetrix
