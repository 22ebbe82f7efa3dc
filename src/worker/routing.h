#pragma once

#include <QString>

namespace quorin {

namespace http {
struct Request;
}
struct WorkerContext;

// Hands a parsed request to the handler that serves it: GET and DELETE of a file below the
// document root, and queries of an "api" folder. Notes method and target in the worker first.
// What is refused gets its status reply and ends in a GatewayException of kind Request.
void route(WorkerContext& worker, const http::Request& request);

// The path of `target` below `documentRoot`: both put together, the target percent-encoded but for
// its slashes, also where it is encoded already.
[[nodiscard]] QString pathBelowRoot(const QString& documentRoot, const QString& target);

// Serves a target that names a file.
void serveFileTarget(WorkerContext& worker, const http::Request& request);

} // namespace quorin
