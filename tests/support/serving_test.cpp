#include "support/serving_test.h"

#include "support/certificate_store.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace quorin::test {

void startGateway(Gateway& gateway, Site& site, Transport transport, Settings settings) {
    if (transport == Transport::Tls) {
        settings.HttpsEnabled = "true";
        installCertificate(site, settings.GatewayAddress);
    }
    site.writeSettings(std::move(settings));
    gateway.start();
}

QStringList ServingTest::stopAndReadLog() {
    EXPECT_EQ(gateway_.stop(), 0);
    QStringList logged = site_.logged();
    logged = logged.mid(logged.indexOf(kRunStarts));
    logged.removeIf([](const QString& line) {
        return line == kQuitLine || line.startsWith(u"3 Quorin Gateway Http Server End"_s);
    });
    return logged;
}

QStringList ServingTest::stopAndReadHandlerLog() {
    QStringList logged = stopAndReadLog();
    logged.removeIf([](const QString& line) { return line.contains(u"void __cdecl Worker::"_s); });
    return logged;
}

QStringList ServingTest::logOfRequest(const QStringList& lines) {
    return QStringList{kRunStarts, kReadStarts} + lines +
           QStringList{kReadEnds, kRunEnds, kDisconnectStarts, kDisconnectEnds};
}

QString ServingTest::underDocumentRoot(const QString& target) const {
    return site_.appDataPath(u"Vemo/Quorin5/QuorinGatewayHttp/wwwroot"_s) + target;
}

} // namespace quorin::test
