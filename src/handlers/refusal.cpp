#include "handlers/refusal.h"

#include "handlers/reply.h"
#include "handlers/request_context.h"

namespace quorin {

void refuse(RequestContext& context, http::Status status, const QString& reason, FailureLog log) {
    replyStatus(*context.socket, status);
    failRequest(reason, log);
}

} // namespace quorin
