#include "platform/command_line.h"

#include "platform/windows/command_line_text.h"
#include "platform/windows/system.h"

namespace quorin::platform {

// The arguments of main() are limited to the ANSI code page; the command line is in UTF-16.
std::vector<std::string> commandLine(int /*argc*/, char** /*argv*/) {
    std::vector<std::string> texts;
    for (const QString& argument :
         commandLineArguments(QString::fromWCharArray(GetCommandLineW()))) {
        texts.push_back(argument.toStdString());
    }
    return texts;
}

} // namespace quorin::platform
