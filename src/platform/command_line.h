#pragma once

#include <string>
#include <vector>

namespace platform {

// What this process was started with, in UTF-8, the program's name first. `argc` and `argv` are
// those of main(), which on some systems are not in UTF-8.
[[nodiscard]] std::vector<std::string> commandLine(int argc, char** argv);

} // namespace platform
