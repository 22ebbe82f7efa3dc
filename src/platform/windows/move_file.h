#pragma once

#include <QString>

#include <chrono>
#include <functional>

namespace quorin::platform {

// Renames the file `from` to `to` atomically and on the disk, and replaces `to` if it exists.
// Returns 0, or the system's error code.
[[nodiscard]] unsigned long moveReplacing(const QString& from, const QString& to);

// The system's functions that moveWithRetries() uses.
struct MoveFunctions {
    // Moves the file. Returns 0, or the system's error code.
    std::function<unsigned long()> move;
    std::function<std::chrono::steady_clock::time_point()> now;
    std::function<void(std::chrono::milliseconds)> sleep;
};

// How long moveWithRetries() retries, and its pause between two attempts.
inline constexpr std::chrono::milliseconds kMoveRetryTime{2000};
inline constexpr std::chrono::milliseconds kMoveRetryPause{20};

// Moves a file. Virus scanners and indexers open files for a moment without sharing them; the move
// fails with "access denied" or "sharing violation" then. Retries after these two errors for
// kMoveRetryTime. Returns false if the last attempt failed, or an attempt failed with another
// error.
[[nodiscard]] bool moveWithRetries(const MoveFunctions& functions);

} // namespace quorin::platform
