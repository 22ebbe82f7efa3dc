#pragma once

#include <string_view>

namespace quorin {

struct RequestContext;

// Returns true if `target` has the extension of a large file, "zip" or "exe" in any letter case
// (docs/compatibility.md). The extension is the text after the last "." of
// the text after the last backslash; slashes do not separate components.
[[nodiscard]] bool isLargeFile(std::string_view target);

// If `target` is a large file, connections are queued and more than MaxLargeFileRequest pool
// threads are active, including this one: sends status 503, logs that at debug level only and
// throws a silent GatewayException of kind Request. Otherwise does nothing.
void enforceLargeFileLimit(RequestContext& context, std::string_view target);

} // namespace quorin
