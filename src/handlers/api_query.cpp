#include "handlers/api_query.h"

#include "config/gateway_settings.h"
#include "handlers/reply.h"
#include "handlers/request_context.h"
#include "http/header_names.h"
#include "http/response.h"
#include "json/value.h"
#include "json/writer.h"

#include <QUrl>

namespace quorin {

namespace {

// In lower case: names are converted to it before they are compared.
constexpr QStringView kCommunicationSchemeQuery = u"webapicommscheme";
constexpr QStringView kOrganizationIdQuery = u"webapiorganizationid";

constexpr const char* kCommunicationSchemeKey = "CommunicationScheme";
constexpr const char* kOrganizationIdKey = "OrganizationId";
constexpr const char* kJsonContentType = "application/json";

void replyMember(QSslSocket& socket, const char* key, QStringView value) {
    ravenjson::Value document(ravenjson::Kind::Object);
    document[key] = value.toUtf8().toStdString();
    const std::string text = ravenjson::toString(document);

    http::Response response(http::Status::Ok);
    response.headers.set(http::kContentLength, std::to_string(text.size()));
    response.headers.set(http::kContentType, kJsonContentType);
    response.appendBody(text);
    writeSocket(socket, serialized(response));
}

} // namespace

void serveApi(RequestContext& context, const QString& target) {
    const QString name = QUrl(target).fileName(QUrl::FullyDecoded).toLower();
    if (name == kCommunicationSchemeQuery) {
        replyMember(*context.socket, kCommunicationSchemeKey,
                    schemeText(context.communicationScheme));
    } else if (name == kOrganizationIdQuery) {
        replyMember(*context.socket, kOrganizationIdKey,
                    GatewaySettings::instance().OrganizationId);
    } else {
        writeSocket(*context.socket, makeResponse(http::Status::InternalServerError));
    }
}

} // namespace quorin
