#pragma once

#include <string>
#include <vector>

namespace quorin {

// The parameters of main(), and what the program makes of them.
struct CommandLine {
    int& argc; // for QCoreApplication
    char** argv;
    std::string program;
    std::vector<std::string> arguments; // after the command; UTF-8
};

} // namespace quorin
