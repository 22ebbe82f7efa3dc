#include "support/settings_samples.h"

#include <QList>

namespace quorin::test {

std::vector<SettingsSample> settingsSamples() {
    const QByteArray sample(kSettingsSample);
    std::vector<SettingsSample> samples{
        {"Complete", sample},
        {"Empty", ""},
        {"NotXml", "Port=8080"},
        {"NotWellFormed", "<QuorinGatewaySetting><General></QuorinGatewaySetting>"},
        {"OneGroup", QByteArray(sample).replace("SecondaryGatewaySetting>", "Other>")},
        {"OneAddress",
         QByteArray(sample).replace("<GatewayConnectSetting><GatewayAddress>gateway-2.example"
                                    "</GatewayAddress></GatewayConnectSetting>",
                                    "")},
        {"WithCrLf", QByteArray(sample).replace("\n", "\r\n")},
    };
    for (const SettingsFault& fault : kSettingsFaults) {
        QByteArray content = sample;
        content.replace(content.indexOf(fault.from), qsizetype(qstrlen(fault.from)), fault.to);
        samples.push_back({fault.name, content});
    }
    for (const char* const group : kSettingsGroups) {
        QByteArray content = sample;
        content.replace(QByteArray('<' + QByteArray(group) + '>'), "<Other>");
        content.replace(QByteArray("</" + QByteArray(group) + '>'), "</Other>");
        samples.push_back({std::string("Without") + group, content});
    }
    for (const LargeFileLimit& limit : kLargeFileLimits) {
        QByteArray content = sample;
        content.replace("<MaxUserSession>10<",
                        QByteArray("<MaxUserSession>" + QByteArray(limit.maxUserSession) + '<'));
        content.replace("<MaxLargeFileRequest>9</MaxLargeFileRequest>", limit.configured);
        samples.push_back({std::string("Limit") + limit.name, content});
    }
    return samples;
}

} // namespace quorin::test
