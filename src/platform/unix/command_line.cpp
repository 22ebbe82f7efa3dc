#include "platform/command_line.h"

namespace quorin::platform {

std::vector<std::string> commandLine(int argc, char** argv) {
    return {argv, argv + argc};
}

} // namespace quorin::platform
