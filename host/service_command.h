#pragma once

#include <string>
#include <vector>

namespace quorin {

inline constexpr const char* kServiceUsage =
    "       quorin-gateway service install [--name NAME] SETTINGS primary|secondary\n"
    "       quorin-gateway service uninstall [--name NAME]\n";

inline constexpr const char* kServiceHelp =
    "service install    (Windows) Installs the gateway as a service that starts with\n"
    "       the system, and creates its folders.\n"
    "service uninstall  (Windows) Stops and removes the service. The folders remain.\n";

// Executes the command `service` and returns the exit code. `arguments` is the command line of the
// process in UTF-8. Call on the main thread.
[[nodiscard]] int serviceCommand(const std::vector<std::string>& arguments);

} // namespace quorin
