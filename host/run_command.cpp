#include "run_command.h"

#include "command_line.h"
#include "gateway_call.h"
#include "gateway_events.h"
#include "platform/descriptors.h"
#include "platform/event_log.h"
#include "platform/termination.h"
#include "start_notice.h"
#include "status_file.h"
#include "usage.h"

#include <string>

namespace quorin {

int runCommand(const CommandLine& line) {
    if (line.arguments.size() != 2) {
        return reportUsageError("'run' requires a settings file and 'primary' or 'secondary'");
    }
    const GatewayArguments arguments{line.program, line.arguments[0], line.arguments[1]};
    if (const std::string error = groupError(arguments.group); !error.empty()) {
        return reportUsageError(error);
    }
    platform::raiseDescriptorLimit();
    const platform::TerminationWatch watch(stopOwnGateway);
    const check::GatewayStatus status = currentStatus(arguments);
    StatusFile statusFile(status);
    StartNotice notice(arguments, status);
    GatewayEvents events(platform::EventLog::ofProgram(), arguments);
    return callGateway(arguments, {&statusFile, &notice, &events});
}

} // namespace quorin
