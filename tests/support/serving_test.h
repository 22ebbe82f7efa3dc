#pragma once

#include "support/client.h"
#include "support/gateway.h"
#include "support/site.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace quorin::test {

// The replies that end a refused request: an explicit status is followed by a second reply.
inline const QByteArray kReply500 = "HTTP/1.1 500 Internal Server Error\r\n\r\n";
inline const QByteArray kReply404 = "HTTP/1.1 404 Not Found\r\nConnection: close\r\n\r\n";

// The trace lines of a worker.
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

// A gateway that serves a site, asked over plain TCP or over TLS: what it answers and logs is the
// same. Instantiate with testing::ValuesIn(transports()).
class ServingTest : public testing::TestWithParam<Transport> {
protected:
    // With HTTPS on and a certificate in the store where the transport asks for it.
    void startGateway(Settings settings = {});

    // The answer to one request on a connection of its own.
    QByteArray ask(const QByteArray& request) const {
        return exchange(site_.port(), request, GetParam());
    }

    // Stops the gateway; what its workers logged, from the first of them on. The quit's own lines
    // may come between theirs and are left out.
    QStringList stopAndReadLog();
    // The same without the trace lines.
    QStringList stopAndReadHandlerLog();

    // The log of one request that the gateway ends, with `lines` between reading and the end.
    static QStringList logOfRequest(const QStringList& lines);

    // `target` put behind the document root, as the gateway does before it looks at the path.
    QString rooted(const QString& target) const;

    Site site_;
    Gateway gateway_{site_};
};

// What this system's tests can speak.
[[nodiscard]] std::vector<Transport> transports();

[[nodiscard]] inline const char* nameOf(Transport transport) {
    return transport == Transport::Plain ? "Plain" : "Tls";
}

inline void PrintTo(Transport transport, std::ostream* out) {
    *out << nameOf(transport);
}

// Names the instances of a test.
struct TransportName {
    std::string operator()(const testing::TestParamInfo<Transport>& info) const {
        return nameOf(info.param);
    }
};

} // namespace quorin::test
