#pragma once

#include <string_view>

namespace quorin {

struct RequestContext;

// Returns true if `target` names a file of a kind that is served to few clients at a time: the
// extension is "zip" or "exe" in any letter case. The extension is the text after the last "." of
// the text after the last back-slash; slashes do not separate components.
[[nodiscard]] bool isLargeFile(std::string_view target);

// Refuses the request for a large file with status 503 if the request queue is in use and more
// than MaxLargeFileRequest pool threads are active, including this one. Throws then like refuse(),
// with a log line at debug level only.
void enforceLargeFileLimit(RequestContext& context, std::string_view target);

} // namespace quorin
