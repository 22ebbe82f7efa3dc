#pragma once

class QFileInfo;

namespace quorin {

struct WorkerContext;

// Both send the existing file `fileInfo` to the worker's client and log the access line at debug.
// They throw a GatewayException of kind Request when that fails.

// Chunk by chunk: a chunk is read when the one before it has left, or its time was over, so that a
// worker holds one chunk at a time. The content type is that of the file's folder.
void sendFile(WorkerContext& worker, const QFileInfo& fileInfo);

// Whole, and read under the file's lock, since another process rewrites notification files.
void sendNotificationFile(WorkerContext& worker, const QFileInfo& fileInfo);

} // namespace quorin
