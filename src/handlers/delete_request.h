#pragma once

class QFileInfo;

namespace quorin {

namespace http {
class HeaderMap;
}
struct RequestContext;

// Answers a DELETE of the existing file `fileInfo`. Does not delete it: with the header
// "X-Quorin-Notification-Reset-Date", resets the notifications in the file, sends status 204 and
// logs the access line at info level. Without the header, or if the reset fails, sends status 500
// and throws a GatewayException of kind Request.
void deleteRequest(RequestContext& context, const QFileInfo& fileInfo,
                   const http::HeaderMap& headers);

} // namespace quorin
