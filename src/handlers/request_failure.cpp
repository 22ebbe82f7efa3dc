#include "handlers/request_failure.h"

#include "config/gateway_exception.h"

namespace quorin {

void failRequest(const QString& reason, FailureLog log) {
    throw GatewayException(GatewayException::Request, endMessage(reason),
                           log == FailureLog::Suppress);
}

} // namespace quorin
