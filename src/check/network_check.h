#pragma once

#include "check/finding.h"
#include "check/running_gateway.h"

#include <optional>

namespace quorin::check {

class SettingsRecord;

// Adds a warning if `running` is a gateway.
void checkRunningGateway(const std::optional<RunningGateway>& running, Findings& findings);

// Adds a finding if the gateway could not listen on its port. Binds a socket to the port and closes
// it at once; it never listens. A port that `running` uses is not reported.
void checkPort(const SettingsRecord& record, const std::optional<RunningGateway>& running,
               Findings& findings);

// Adds a finding if the gateway could not listen on its control pipe. Does not open the pipe.
void checkControlPipe(Findings& findings);

} // namespace quorin::check
