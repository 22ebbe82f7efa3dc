#include "worker/request_failure.h"

#include "config/gateway_exception.h"

namespace quorin {

void failRequest(const QString& text, FailureLog log) {
    throw GatewayException(GatewayException::Request, endMessage(text),
                           log == FailureLog::Suppress);
}

} // namespace quorin
