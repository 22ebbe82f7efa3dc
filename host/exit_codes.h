#pragma once

namespace quorin {

// The gateway itself ends the process with 1 or 2 if its start fails. The last two codes are
// EX_USAGE and EX_NOPERM of sysexits.h.
enum ExitCode : int { kOk = 0, kFailed = 1, kUsageError = 64, kPermissionDenied = 77 };

} // namespace quorin
