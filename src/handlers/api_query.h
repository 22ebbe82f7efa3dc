#pragma once

#include <QString>

namespace quorin {

struct RequestContext;

// Answers the query with the name at the end of `target` with a small JSON document:
//
//     WebApiCommScheme        {"CommunicationScheme":"https"}    "http", "https" or ""
//     WebApiOrganizationId    {"OrganizationId":"..."}           from the settings file
//
// The letter case of the name is ignored. Any other name gets status 500. Logs nothing.
void serveApi(RequestContext& context, const QString& target);

} // namespace quorin
