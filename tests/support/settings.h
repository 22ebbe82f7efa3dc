#pragma once

#include <QByteArray>

namespace quorin::test {

// The elements of a settings file as text. The defaults suit tests on one machine; a test changes
// only the settings that it covers.
struct Settings {
    QByteArray QueueSize = "64";
    QByteArray LogLevel = "debug";
    QByteArray Generation = "2";
    QByteArray Port = "0";    // Site::writeSettings() chooses a free port
    QByteArray SecondaryPort; // of the secondary group; if empty, Port
    QByteArray MaxUserSession = "10";
    QByteArray MaxTCPConnection = "100";
    QByteArray ConnectionTimeout = "30";
    QByteArray HTTPRequestTimeout = "600";
    QByteArray ThreadReadBufferSize = "65536";
    QByteArray IsMadeClientRequestWaited = "true";
    QByteArray MaxLargeFileRequest = "4";
    QByteArray HttpsEnabled = "false";
    QByteArray IsEnabledHttpInFacility = "false";
    QByteArray GatewayAddress = "localhost";
    QByteArray OrganizationId = "facility-7";
    QByteArray RootUrl = "https://cloud.example/QuorinCloud5";

    // Returns the settings file. Apart from the port, the primary and the secondary group have the
    // same settings.
    [[nodiscard]] QByteArray toXml() const;
};

} // namespace quorin::test
