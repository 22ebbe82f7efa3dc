#include "config/settings_file.h"

#include "config/gateway_exception.h"
#include "config/gateway_settings.h"
#include "config/settings_reader.h"
#include "log/application_logger.h"

namespace quorin {

namespace {

// Ends the reading at the first fault.
class StartObserver final : public SettingsObserver {
public:
    void onReading(const SettingReading& reading) override {
        if (reading.isFatal()) {
            throw GatewayException(GatewayException::Fatal, reading.fault, false);
        }
    }

    void onLogSettings(const GatewaySettings& settings) override {
        QuorinGatewayApplicationLogger::setUpApplicationLog(
            {settings.Generation, settings.QueueSize, settings.LogLevel});
    }
};

} // namespace

QString settingsPath(const char* argument) {
    return QString::fromUtf8(argument).replace(u'\\', u'/');
}

void loadSettings(const QString& path, bool primary) {
    StartObserver observer;
    readSettings(path, primary, GatewaySettings::instance(), observer);
}

} // namespace quorin
