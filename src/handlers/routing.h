#pragma once

#include <QString>

namespace quorin {

namespace http {
struct Request;
}
struct RequestContext;

// Calls the handler of a parsed request: GET and DELETE of a file below the document root, and
// queries of an "api" folder. First records method and target in the context. To refuse a request,
// sends its status reply and throws a GatewayException of kind Request.
void route(RequestContext& context, const http::Request& request);

// Returns `documentRoot` followed by `target`, with everything in the target but slashes and
// unreserved characters percent-encoded, including percent signs.
[[nodiscard]] QString pathBelowRoot(const QString& documentRoot, const QString& target);

} // namespace quorin
