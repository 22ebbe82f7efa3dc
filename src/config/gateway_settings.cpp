#include "config/gateway_settings.h"

GatewaySettings& GatewaySettings::instance() {
    static GatewaySettings settings;
    return settings;
}
