#pragma once

namespace quorin::test {

// Does on Windows what the library call_recorder does on Linux: appends a line to the file
// QUORIN_CALL_RECORD for each of these calls, before the call is made:
//
//     write PATH              to a file
//     fsync PATH              FlushFileBuffers
//     rename FROM TO          MoveFileEx
//     fsync FOLDER-OF-TO      after it, if MoveFileEx returns only when the change is on the disk
//     send STATUS-LINE        of a plain HTTP reply
//
// Paths have slashes. A call whose line is the content of the file QUORIN_FAILING_CALL fails as on
// a full disk. A write then writes half of its data.
void installCallRecorder();

} // namespace quorin::test
