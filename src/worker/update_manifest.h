#pragma once

class QFileInfo;

namespace quorin {

struct WorkerContext;

// Points `fileInfo`, a file named "update.json", at the variant for the address the request came
// in on where there is one: "update_192.168.0.10.json" beside it.
void selectUpdateManifest(const WorkerContext& worker, QFileInfo& fileInfo);

} // namespace quorin
