#pragma once

#include "config/communication_scheme.h"

#include <QDateTime>
#include <QSslSocket>
#include <QString>
#include <QUrl>

#include <memory>

namespace quorin {

// Per-request state shared by the worker and its handlers. Owned by the worker. Pool thread only.
struct RequestContext {
    bool disconnected = false;    // the peer has disconnected; transfers stop
    bool responseStarted = false; // a success header has been written: no 500 may follow

    // The folder that targets are relative to, without a trailing separator.
    QString documentRoot;
    // Never assigned: the access line has an empty field for it (docs/compatibility.md).
    QString remoteAddressText;
    CommunicationScheme communicationScheme = CommunicationScheme::None;

    // Null until the worker runs.
    std::unique_ptr<QSslSocket> socket;

    // Method and target for the log.
    QString methodText;
    QUrl requestUrl;

    // Never assigned, so every duration since then is 0: a transfer expires only if its time limit
    // is 0, and the access line always ends in 0 (docs/compatibility.md).
    QDateTime requestStart;
    QDateTime requestEnd;
};

} // namespace quorin
