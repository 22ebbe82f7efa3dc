#pragma once

class QFileInfo;

namespace quorin {

struct RequestContext;

// Both functions send the existing file `fileInfo` to the client and log the access line at debug
// level. They throw a GatewayException of kind Request if that fails.

// Sends the file in chunks of ThreadReadBufferSize bytes. Each chunk has kSendTimeout to be sent.
// At most one piece of 512 KiB is in memory, whatever the chunk size. The content type is that of
// the file's folder (docs/compatibility.md). A file that is shortened during the transfer is filled
// up with zero bytes.
void sendFile(RequestContext& context, const QFileInfo& fileInfo);

// Reads the complete file under its lock, since other processes rewrite notification files, then
// sends it within kSendTimeout.
void sendNotificationFile(RequestContext& context, const QFileInfo& fileInfo);

} // namespace quorin
