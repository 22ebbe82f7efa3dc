#include "platform/command_line.h"

namespace platform {

std::vector<std::string> commandLine(int argc, char** argv) {
    return {argv, argv + argc};
}

} // namespace platform
