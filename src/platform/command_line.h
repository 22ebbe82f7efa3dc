#pragma once

#include <string>
#include <vector>

namespace quorin::platform {

// Returns the command line of this process in UTF-8, starting with the program name. `argc` and
// `argv` are the parameters of main(); on Windows they are ignored because they are not in UTF-8.
[[nodiscard]] std::vector<std::string> commandLine(int argc, char** argv);

} // namespace quorin::platform
