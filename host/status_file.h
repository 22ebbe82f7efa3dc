#pragma once

#include "gateway_call.h"

#include "check/running_gateway.h"
#include "platform/held_file.h"

#include <memory>

namespace quorin {

// Holds the file in which the gateway of this process describes itself, while it serves.
class StatusFile final : public GatewayObserver {
public:
    // The time in `status` is replaced by that of onStarted().
    explicit StatusFile(check::GatewayStatus status);

    void onStarted() override;
    void onStopping() override;

private:
    check::GatewayStatus status_;
    std::unique_ptr<platform::HeldFile> file_;
};

// Reads the settings file. Returns what a gateway of this process that begins to serve now states
// about itself.
[[nodiscard]] check::GatewayStatus currentStatus(const GatewayArguments& arguments);

} // namespace quorin
