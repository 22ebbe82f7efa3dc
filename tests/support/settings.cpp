#include "support/settings.h"

#include <QStringBuilder>

namespace quorin::test {

namespace {

QByteArray element(const char* name, const QByteArray& content) {
    return QByteArray("<") + name + ">" + content + "</" + name + ">\n";
}

} // namespace

QByteArray Settings::toXml() const {
    const QByteArray applicationLog = element(
        "ApplicationLog", element("LogLevel", LogLevel) + element("Generation", Generation));
    const auto group = [&](const QByteArray& port) -> QByteArray {
        return element("Http", element("Log", element("QueueSize", QueueSize) + applicationLog) +
                                   element("Port", port) +
                                   element("MaxUserSession", MaxUserSession) +
                                   element("MaxTCPConnection", MaxTCPConnection) +
                                   element("ConnectionTimeout", ConnectionTimeout) +
                                   element("HTTPRequestTimeout", HTTPRequestTimeout) +
                                   element("ThreadReadBufferSize", ThreadReadBufferSize) +
                                   element("IsMadeClientRequestWaited", IsMadeClientRequestWaited) +
                                   element("MaxLargeFileRequest", MaxLargeFileRequest) +
                                   element("HttpsEnabled", HttpsEnabled)) +
               element("Proxy", element("IsEnabledHttpInFacility", IsEnabledHttpInFacility));
    };
    const QByteArray secondaryPort = SecondaryPort.isEmpty() ? Port : SecondaryPort;
    const QByteArray connect =
        element("GatewayConnectSetting", element("GatewayAddress", GatewayAddress));
    return element("QuorinGatewaySetting",
                   element("PrimaryGatewaySetting", group(Port)) +
                       element("SecondaryGatewaySetting", group(secondaryPort)) +
                       element("General", connect + connect +
                                              element("OrganizationId", OrganizationId) +
                                              element("QuorinCloud", element("RootUrl", RootUrl))));
}

} // namespace quorin::test
