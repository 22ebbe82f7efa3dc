#pragma once

class QFileInfo;

namespace quorin {

namespace http {
class HeaderMap;
}
struct WorkerContext;

// Answers a DELETE of the existing file `fileInfo`, which deletes nothing: with the header
// "X-Quorin-Notification-Reset-Date" it resets the notifications in the file and gets status 204;
// any other DELETE is refused with 500. The access line is logged at info. Throws a
// GatewayException of kind Request when refused.
void deleteRequest(WorkerContext& worker, const QFileInfo& fileInfo,
                   const http::HeaderMap& headers);

} // namespace quorin
