#include "service_arguments.h"

#include "usage.h"

#include <algorithm>
#include <cstddef>
#include <optional>

namespace quorin {

namespace {

constexpr std::size_t kMaxNameLength = 80;

std::optional<ServiceArguments::Action> actionOf(const std::string& text) {
    using Action = ServiceArguments::Action;
    if (text == "install") {
        return Action::Install;
    }
    if (text == "uninstall") {
        return Action::Uninstall;
    }
    if (text == "stop") {
        return Action::Stop;
    }
    return text == "run" ? std::optional(Action::Run) : std::nullopt;
}

// The characters that need no quoting in the name of an account, a registry key or a command.
bool isServiceName(const std::string& name) {
    return !name.empty() && name.size() <= kMaxNameLength &&
           std::all_of(name.begin(), name.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                      c == '-' || c == '_';
           });
}

// Moves leading options from `rest` to `result`. Returns an error message, or an empty string.
std::string takeOptions(std::vector<std::string>& rest, ServiceArguments& result) {
    const bool isInstall = result.action == ServiceArguments::Action::Install;
    while (!rest.empty()) {
        const std::string option = rest.front();
        const std::string value = rest.size() > 1 ? rest[1] : std::string();
        std::ptrdiff_t used = 2;
        if (option == "--name") {
            if (!isServiceName(value)) {
                return "'--name' requires a name of letters, digits, '-' and '_'";
            }
            result.name = QString::fromStdString(value);
        } else if (isInstall && option == "--sample") {
            if (value.empty()) {
                return "'--sample' requires a file";
            }
            result.sample = QString::fromStdString(value);
        } else if (isInstall && option == "--update") {
            result.updates = true;
            used = 1;
        } else {
            break;
        }
        rest.erase(rest.begin(), rest.begin() + used);
    }
    return {};
}

} // namespace

std::variant<ServiceArguments, std::string>
parseServiceArguments(const std::vector<std::string>& arguments) {
    const auto action = !arguments.empty() ? actionOf(arguments.front()) : std::nullopt;
    if (!action) {
        return "'service' requires 'install', 'uninstall', 'stop' or 'run'";
    }
    ServiceArguments result;
    result.action = *action;
    std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (const std::string error = takeOptions(rest, result); !error.empty()) {
        return error;
    }
    if (*action == ServiceArguments::Action::Uninstall ||
        *action == ServiceArguments::Action::Stop) {
        if (!rest.empty()) {
            return "'service " + arguments.front() + "' takes no arguments besides '--name NAME'";
        }
        return result;
    }
    if (rest.size() != 2 || rest[0].empty() || rest[0].front() == '-') {
        return "'service " + arguments.front() +
               "' requires a settings file and 'primary' or 'secondary'";
    }
    if (const std::string error = groupError(rest[1]); !error.empty()) {
        return error;
    }
    result.settings = QString::fromStdString(rest[0]);
    result.group = QString::fromStdString(rest[1]);
    return result;
}

} // namespace quorin
