#include "check_command.h"

#include "check/start_check.h"
#include "check_report.h"
#include "command_line.h"
#include "config/settings_file.h"
#include "platform/descriptors.h"
#include "usage.h"

#include <QCoreApplication>

#include <cstdio>
#include <string>
#include <vector>

namespace quorin {

int checkCommand(const CommandLine& line) {
    std::vector<std::string> arguments = line.arguments;
    const bool isJson = std::erase(arguments, "--json") > 0;
    if (arguments.size() != 2) {
        return reportUsageError("'check' requires a settings file and 'primary' or 'secondary'");
    }
    if (const std::string error = groupError(arguments[1]); !error.empty()) {
        return reportUsageError(error);
    }
    platform::raiseDescriptorLimit(); // as 'run' does
    const QCoreApplication application(line.argc, line.argv);
    const QString settings = settingsPath(arguments[0].c_str());
    const CheckedStart start{settings, QString::fromStdString(arguments[1]),
                             check::checkStart(settings, arguments[1] == "primary")};
    const QByteArray report = isJson ? jsonReport(start) : textReport(start).toUtf8();
    std::fputs(report.constData(), stdout);
    return start.count(check::Severity::Error) == 0 ? kOk : kFailed;
}

} // namespace quorin
