#pragma once

#include "worker/communication_scheme.h"

#include <QDateTime>
#include <QSslSocket>
#include <QString>
#include <QUrl>

#include <memory>

namespace quorin {

// What a request's handlers may touch of the worker they run in. Belongs to its worker; used on
// the worker's pool thread alone.
struct WorkerContext {
    bool disconnected = false;    // the peer has gone; transfers stop
    bool responseStarted = false; // a success header was written: no 500 may follow

    // The folder below which targets are looked up, without a trailing separator.
    QString documentRoot;
    // Stays empty: the access line has an empty field there.
    QString remoteAddressText;
    CommunicationScheme communicationScheme = CommunicationScheme::None;

    // Null until the worker runs.
    std::unique_ptr<QSslSocket> socket;

    // The request's method and target, as the log shows them.
    QString methodText;
    QUrl requestUrl;

    // Stays null, so that every duration counted from it is 0: a transfer expires only when the
    // time allowed for it is 0, and the access line always ends in 0.
    QDateTime requestStart;
    QDateTime requestEnd;
};

} // namespace quorin
