#pragma once

#include <QByteArray>

namespace quorin::test {

// What a settings file says, as the text of its elements. The sample is good for a test on one
// machine; a test changes what it is about.
struct Settings {
    QByteArray QueueSize = "64";
    QByteArray LogLevel = "debug";
    QByteArray Generation = "2";
    QByteArray Port = "0";
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

    // Both groups say the same.
    [[nodiscard]] QByteArray toXml() const;
};

} // namespace quorin::test
