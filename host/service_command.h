#pragma once

namespace quorin {

struct CommandLine;

inline constexpr const char* kServiceHelp =
    "usage: quorin-gateway service install [--name NAME] [--sample FILE] [--update]\n"
    "                                      SETTINGS primary|secondary\n"
    "       quorin-gateway service stop|uninstall [--name NAME]\n"
    "\n"
    "install    installs the gateway as a service of Windows that starts with the\n"
    "           system, and creates its folders\n"
    "stop       stops the service and waits until its process has ended; its files can\n"
    "           then be replaced\n"
    "uninstall  stops and removes the service, and leaves the folders\n"
    "\n"
    "Requires an administrator. NAME is QuorinGateway if it is not given.\n"
    "\n"
    "  --sample FILE  copies FILE to SETTINGS if there is no such file\n"
    "  --update       gives an existing service these arguments; leaves its folders and\n"
    "                 other properties as they are\n"
    "\n"
    "Exit codes:  0   installed, updated, stopped or removed\n"
    "             1   refused or failed; the reason is on standard error\n"
    "             64  wrong usage, or not on Windows\n"
    "             77  this account is not an administrator\n";

// Executes the command `service`, reports a failure to standard error and returns the exit code.
// Call on the main thread.
int serviceCommand(const CommandLine& line);

} // namespace quorin
