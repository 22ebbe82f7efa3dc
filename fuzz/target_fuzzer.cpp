// Requests an arbitrary target with GET or DELETE, selected by the first byte. Around the document
// root are files that must not be served.
//   - Every request gets a reply. A failed request does not get a 2xx status.
//   - Only files below the root are sent.
//   - No file changes except a notification document that is reset.

#include "application.h"
#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "document_root.h"
#include "handlers/request_context.h"
#include "handlers/routing.h"
#include "http/request.h"
#include "peer.h"
#include "require.h"

#include <cstdint>
#include <memory>

namespace {

void checkReply(const QByteArray& reply, bool isServed) {
    require(reply.startsWith("HTTP/1.1 "), "every request gets a reply");
    require(!reply.contains(DocumentRoot::kSecret), "no secret is sent");
    const bool isSuccess = reply.startsWith("HTTP/1.1 2");
    require(isServed || !isSuccess, "a failed request gets no 2xx status");
    if (isSuccess) {
        require(reply.endsWith(DocumentRoot::kPublic) ||
                    reply.endsWith(DocumentRoot::kNotification) || reply.endsWith("\"}") ||
                    reply.startsWith("HTTP/1.1 204 "),
                "the body is a file below the root or an api reply");
    }
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    createApplication();
    quorin::GatewaySettings::instance().ThreadReadBufferSize = 4096;
    quorin::GatewaySettings::instance().HTTPRequestTimeout = 600;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const DocumentRoot files;
    if (size == 0) {
        return 0;
    }
    quorin::http::Request request;
    request.line.method =
        data[0] % 2 == 0 ? quorin::http::Method::Get : quorin::http::Method::Delete;
    request.line.target.assign(reinterpret_cast<const char*>(data + 1), size - 1);
    request.headers.set("X-Quorin-Notification-Reset-Date", "2024-06-01T00:00:00Z");

    files.writeNotification();
    const auto [gatewayEnd, client] = connectedPair();
    quorin::RequestContext context;
    context.documentRoot = files.path();
    context.socket = std::make_unique<QSslSocket>();
    require(context.socket->setSocketDescriptor(gatewayEnd), "QSslSocket accepts the descriptor");
    bool isServed = true;
    try {
        quorin::route(context, request);
    } catch (const quorin::GatewayException&) {
        isServed = false;
    }
    QByteArray reply;
    client.receive(reply);
    checkReply(reply, isServed);
    files.check();
    return 0;
}
