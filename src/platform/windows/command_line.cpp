#include "platform/command_line.h"

#include "platform/windows/system.h"

#include <shellapi.h>

#include <memory>

namespace quorin::platform {

// The arguments of main() are limited to the ANSI code page; the command line is in UTF-16.
std::vector<std::string> commandLine(int /*argc*/, char** /*argv*/) {
    int count = 0;
    const std::unique_ptr<LPWSTR, decltype(&LocalFree)> arguments(
        CommandLineToArgvW(GetCommandLineW(), &count), &LocalFree);
    std::vector<std::string> texts;
    for (int i = 0; arguments && i < count; ++i) {
        texts.push_back(QString::fromWCharArray(arguments.get()[i]).toStdString());
    }
    return texts;
}

} // namespace quorin::platform
