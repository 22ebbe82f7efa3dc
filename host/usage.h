#pragma once

#include <string>

namespace quorin {

// The exit codes of the program. A gateway also ends the process with kFailed or 2 if its start
// fails. kNotRunning is that of `systemctl status`; kUsageError and kPermissionDenied are EX_USAGE
// and EX_NOPERM of sysexits.h.
enum ExitCode : int {
    kOk = 0,
    kFailed = 1,
    kNotRunning = 3,
    kUsageError = 64,
    kPermissionDenied = 77
};

// Prints one line to standard error. Returns kUsageError.
int reportUsageError(const std::string& message);

// Returns an error message if `group` is neither "primary" nor "secondary", else an empty text.
[[nodiscard]] std::string groupError(const std::string& group);

} // namespace quorin
