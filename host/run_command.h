#pragma once

namespace quorin {

struct CommandLine;

inline constexpr const char* kRunHelp =
    "usage: quorin-gateway run SETTINGS primary|secondary\n"
    "\n"
    "Runs a gateway with the settings file SETTINGS and its group for the primary or\n"
    "the secondary gateway, until 'quorin-gateway stop', Ctrl-C or SIGTERM. The\n"
    "gateway then completes its current requests; a second Ctrl-C or SIGTERM ends it\n"
    "at once.\n"
    "\n"
    "If standard error is a terminal, the program states there where the gateway\n"
    "serves, or why its start failed. Otherwise the program prints nothing. The\n"
    "gateway writes its errors to its log.\n"
    "\n"
    "Exit codes:  0   stopped\n"
    "             1   fatal error\n"
    "             2   another gateway runs on this machine\n"
    "             64  wrong usage\n";

// Runs a gateway until it is stopped and returns the exit code. Ends the process if the start
// fails. Call on the main thread, before any other thread is started.
int runCommand(const CommandLine& line);

} // namespace quorin
