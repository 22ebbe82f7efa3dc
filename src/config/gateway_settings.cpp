#include "config/gateway_settings.h"

namespace quorin {

GatewaySettings& GatewaySettings::instance() {
    static GatewaySettings settings;
    return settings;
}

} // namespace quorin
