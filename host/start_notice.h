#pragma once

#include "check/finding.h"

#include <QString>

#include <string>

namespace quorin {

namespace check {
struct GatewayStatus;
} // namespace check

// Tells a person at a terminal how the start of a gateway went. If standard error is not a
// terminal, does nothing. At most one object per process; main thread only.
class StartNotice {
public:
    // Checks the start, so that the reason is known if it fails. A process that exits between the
    // constructor and reportServing() or endStart() prints the reason. Creates and destroys a
    // QCoreApplication if standard error is a terminal.
    StartNotice(const std::string& program, const std::string& settings, const std::string& group);

    // Prints where the gateway serves.
    void reportServing(const check::GatewayStatus& status);

    // The gateway has ended by itself.
    void endStart();

private:
    bool isEnabled_;
};

// Returns the lines that describe where the gateway serves and how to stop it.
[[nodiscard]] QString servingText(const check::GatewayStatus& status, const QString& documentRoot,
                                  const QString& logFolder);

// Returns the lines that explain a failed start, from the findings of a check before it.
[[nodiscard]] QString failedStartText(const check::Findings& findings, const QString& logFolder);

} // namespace quorin
