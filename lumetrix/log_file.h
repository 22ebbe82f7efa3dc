#pragma once

#include <spdlog/sinks/sink.h>

#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>

namespace lumetrix2 {

// When a new log file begins, and how many are kept.
struct Rotation {
    int filesKept = 0;                   // the one being written included; see openLogFile
    std::optional<std::size_t> maxBytes; // by size at this many bytes; absent: by date
};

// Opens the log file of `baseName` in `directory` (made when missing) for appending, and returns
// the sink that writes its lines and turns to a new file as `rotation` says:
//  - by date, to BASE_YYYY-MM-DD.log with the first message after midnight; the newest `filesKept`
//    are kept, all of them when it is below 1; what is older is removed when a file is opened, one
//    that cannot be removed is left;
//  - by size, from BASE.log over BASE.1.log to the oldest; `filesKept` is taken as 1 to 200000.
//
// The last line of an existing file that was cut off in the middle (power failure, full disk) is
// ended first. Throws std::exception when the file cannot be opened; so do the sink's log and
// flush when it cannot be written.
std::shared_ptr<spdlog::sinks::sink> openLogFile(const std::filesystem::path& directory,
                                                 const std::filesystem::path& baseName,
                                                 const Rotation& rotation);

} // namespace lumetrix2
