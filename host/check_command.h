#pragma once

namespace quorin {

struct CommandLine;

inline constexpr const char* kCheckHelp =
    "usage: quorin-gateway check SETTINGS primary|secondary [--json]\n"
    "\n"
    "Reports everything that would make 'quorin-gateway run' with the same arguments\n"
    "fail, or the gateway serve other than it was set up to: settings, port, control\n"
    "pipe, libraries, folders and their access rights, disk space, certificate. Run\n"
    "it with the account and the environment of the gateway. It creates and changes\n"
    "nothing and serves nothing; to see whether the port is free, it binds the port\n"
    "for a moment without listening.\n"
    "\n"
    "--json  Prints one JSON document instead of one line for each finding.\n"
    "\n"
    "Exit codes:  0   no errors; there may be warnings\n"
    "             1   errors\n"
    "             64  wrong usage\n";

// Checks the start of a gateway, prints the findings and returns the exit code.
int checkCommand(const CommandLine& line);

} // namespace quorin
