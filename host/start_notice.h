#pragma once

#include "gateway_call.h"

#include "check/finding.h"
#include "check/running_gateway.h"

#include <QString>

#include <string>

namespace quorin {

// Prints how the start of a gateway went, for a person at a terminal. Prints nothing if standard
// error is not a terminal.
class StartNotice final : public GatewayObserver {
public:
    StartNotice(GatewayArguments arguments, check::GatewayStatus status);

    // Checks the start, so that all reasons are known if it fails. Creates and destroys a
    // QCoreApplication.
    void onStarting() override;
    void onStarted() override;
    void onStartFailed(int exitCode, const QString& reason) override;

private:
    const GatewayArguments arguments_;
    const check::GatewayStatus status_;
    const bool isEnabled_;
    std::string failureText_;
};

// Returns the lines that describe where the gateway serves and how to stop it.
[[nodiscard]] QString servingText(const check::GatewayStatus& status, const QString& documentRoot,
                                  const QString& logFolder);

// Returns the lines that explain a failed start, from the findings of a check before it.
[[nodiscard]] QString failedStartText(const check::Findings& findings, const QString& logFolder);

} // namespace quorin
