#pragma once

#include <QString>

namespace quorin {

struct WorkerContext;

// Answers the query that `target` names with a small JSON document:
//
//     WebApiCommScheme        {"CommunicationScheme":"https"}    "http", "https" or ""
//     WebApiOrganizationId    {"OrganizationId":"..."}           as the settings file says
//
// in any letter case. Any other name gets status 500, and nothing is logged.
void serveApi(WorkerContext& worker, const QString& target);

} // namespace quorin
