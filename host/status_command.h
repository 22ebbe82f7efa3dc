#pragma once

#include "check/running_gateway.h"

#include <QString>

namespace quorin {

struct CommandLine;

inline constexpr const char* kStatusHelp =
    "usage: quorin-gateway status\n"
    "\n"
    "Reports whether a gateway runs on this machine, since when, and with which\n"
    "settings and port. Does not wait for the gateway and does not connect to it. On\n"
    "Linux, run it with the TMPDIR of the gateway.\n"
    "\n"
    "Exit codes:  0   a gateway runs\n"
    "             3   no gateway runs\n"
    "             64  wrong usage\n";

// Prints whether a gateway runs and returns the exit code.
int statusCommand(const CommandLine& line);

// Returns the lines that describe a running gateway.
[[nodiscard]] QString statusText(const check::RunningGateway& gateway);

} // namespace quorin
