#pragma once

#include <QString>

namespace quorin {

namespace http {
struct Request;
}
struct WorkerContext;

// Calls the handler of a parsed request: GET and DELETE of a file below the document root, and
// queries of an "api" folder. Records method and target in the worker first. To refuse a request,
// sends its status reply and throws a GatewayException of kind Request.
void route(WorkerContext& worker, const http::Request& request);

// Returns `documentRoot` followed by `target`, with everything in the target but slashes and
// unreserved characters percent-encoded, including percent signs.
[[nodiscard]] QString pathBelowRoot(const QString& documentRoot, const QString& target);

// Serves a target that names a file. Sends status 400 if the path contains "/../" or "/./", and
// 404 if it names no file or is longer than kMaxPathLength.
void serveFileTarget(WorkerContext& worker, const http::Request& request);

} // namespace quorin
