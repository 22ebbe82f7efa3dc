#pragma once

namespace quorin {

// Which gateway a stop command is for: any on this machine, or only one in this process.
enum class Gateway { Any, OfThisProcess };

enum class StopResult {
    Delivered,   // the gateway has taken the command, or has ended
    NoGateway,   // no such gateway listens on the control pipe; nothing was sent
    AccessDenied // this account may not open the control pipe
};

// Sends the stop command to the gateway that listens on this machine's control pipe and returns
// when the gateway has closed the pipe. The gateway serves controllers one at a time, so this waits
// for earlier ones, without a time limit. Needs no event loop; the calling thread must be the main
// thread or a QThread.
[[nodiscard]] StopResult tellToStop(Gateway gateway);

} // namespace quorin
