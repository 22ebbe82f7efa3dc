#pragma once

#include "support/client.h"
#include "support/gateway.h"
#include "support/messages.h"
#include "support/site.h"

#include <gtest/gtest.h>

#include <array>
#include <ostream>

namespace quorin::test {

// A worker's trace lines.
inline const QString kRunStarts = QStringLiteral("2 [Start] void __cdecl Worker::run(void)");
inline const QString kRunEnds = QStringLiteral("2 [End] void __cdecl Worker::run(void)");
inline const QString kReadStarts =
    QStringLiteral("2 [Start] void __cdecl Worker::SslSocketReadyRead(void)");
inline const QString kReadEnds =
    QStringLiteral("2 [End] void __cdecl Worker::SslSocketReadyRead(void)");
inline const QString kDisconnectStarts =
    QStringLiteral("2 [Start] void __cdecl Worker::SslSocketDisconnected(void)");
inline const QString kDisconnectEnds =
    QStringLiteral("2 [End] void __cdecl Worker::SslSocketDisconnected(void)");

// The line of the command to quit.
inline const QString kQuitLine = QStringLiteral("3 quit command recieved");

// Starts a gateway with these settings. For TLS, also enables HTTPS and adds a certificate to the
// site's store. Does not wait until the gateway listens; Client does.
void startGateway(Gateway& gateway, Site& site, Transport transport, Settings settings = {});

// For tests of what a gateway replies and logs, which is the same over plain TCP and over TLS.
// Instantiate with testing::ValuesIn(kTransports).
class ServingTest : public testing::TestWithParam<Transport> {
protected:
    void startGateway(const Settings& settings = {}) {
        test::startGateway(gateway_, site_, GetParam(), settings);
    }

    // Sends one request on its own connection and returns the reply.
    QByteArray request(const QByteArray& bytes) const {
        return exchange(site_.port(), bytes, GetParam());
    }

    // Stops the gateway and returns what it logged from the first worker's start on, without the
    // lines about the quit command, which may be logged between those of the workers.
    QStringList stopAndReadLog();
    // The same without the workers' trace lines.
    QStringList stopAndReadHandlerLog();

    // Returns the log of one request whose connection the gateway closes, with the handler's
    // `lines`.
    static QStringList logOfRequest(const QStringList& lines);

    // `target` appended to the document root, as the gateway does before it checks the path.
    QString underDocumentRoot(const QString& target) const;

    Site site_;
    Gateway gateway_{site_};
};

// The transports that serve the same replies.
inline constexpr std::array kTransports{Transport::Plain, Transport::Tls};

[[nodiscard]] inline const char* transportName(Transport transport) {
    return transport == Transport::Plain ? "Plain" : "Tls";
}

inline void PrintTo(Transport transport, std::ostream* out) {
    *out << transportName(transport);
}

// Names the instances of a parameterized test.
struct TransportName {
    std::string operator()(const testing::TestParamInfo<Transport>& info) const {
        return transportName(info.param);
    }
};

} // namespace quorin::test
