#pragma once

#include <QString>
#include <QStringList>

namespace quorin::platform {

// Returns the command line that CommandLineToArgvW() and the C runtime split into `arguments`. The
// first is the path of the program, which must not contain a quotation mark.
[[nodiscard]] QString commandLineText(const QStringList& arguments);

// Returns the arguments of a command line as the system splits it, starting with the program.
[[nodiscard]] QStringList commandLineArguments(const QString& commandLine);

} // namespace quorin::platform
