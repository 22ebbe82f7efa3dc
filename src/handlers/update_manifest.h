#pragma once

class QFileInfo;

namespace quorin {

struct RequestContext;

// Changes `fileInfo`, a file named "update.json", to the variant in the same folder for the local
// address of the connection, such as "update_192.168.0.10.json", if that exists. A variant whose
// path is longer than kMaxPathLength counts as missing. Logs the request and the file at debug
// level.
void selectUpdateManifest(const RequestContext& context, QFileInfo& fileInfo);

} // namespace quorin
