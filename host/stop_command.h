#pragma once

namespace quorin {

struct CommandLine;

inline constexpr const char* kStopHelp =
    "usage: quorin-gateway stop\n"
    "\n"
    "Tells the gateway on this machine to complete its current requests and stop.\n"
    "Waits while other controllers hold the gateway's control pipe.\n"
    "\n"
    "Exit codes:  0   command delivered\n"
    "             1   no gateway listens for commands on this machine\n"
    "             64  wrong usage\n"
    "             77  no permission to open the gateway's control pipe\n";

// Stops the gateway on this machine, reports a failure to standard error and returns the exit code.
int stopCommand(const CommandLine& line);

// The gateway to which a stop command is sent: any on this machine, or only one in this process.
enum class StopTarget { AnyGateway, GatewayOfThisProcess };

enum class StopResult {
    Delivered,   // the gateway has read the command, or has ended
    NoGateway,   // no such gateway listens on the control pipe; nothing was sent
    AccessDenied // this account may not open the control pipe
};

// Sends the stop command to the gateway that listens on this machine's control pipe and returns
// when the gateway has closed the pipe. The gateway serves one controller at a time; waits for
// earlier ones without a time limit. Does not need an event loop. Call on the main thread or a
// QThread.
[[nodiscard]] StopResult sendStopCommand(StopTarget target);

} // namespace quorin
