#pragma once

#include "config/communication_scheme.h"
#include "worker/shared_tls.h"

#include <QString>

#include <atomic>

namespace quorin {

// State that one server shares with all its workers. The server writes it before it accepts
// connections and, later, only `quitRequested`; workers only read it. They share ownership, so it
// outlives a server that does not wait for its workers.
struct ServerContext {
    QString documentRoot;
    CommunicationScheme communicationScheme = CommunicationScheme::None;
    SharedTls tls; // used if HTTPS is enabled
    std::atomic<bool> quitRequested = false;
};

} // namespace quorin
