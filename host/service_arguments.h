#pragma once

#include <QString>

#include <string>
#include <variant>
#include <vector>

namespace quorin {

inline constexpr QStringView kDefaultServiceName = u"QuorinGateway";

struct ServiceArguments {
    enum class Action { Install, Uninstall, Run, Stop };
    Action action = Action::Run;
    QString name = kDefaultServiceName.toString();
    QString settings; // as given; only for Install and Run
    QString group;    // "primary" or "secondary"; only for Install and Run
    QString sample;   // only for Install: copied to `settings` if that does not exist; may be empty
    bool updates = false; // only for Install: an existing service gets the new arguments
};

// Parses what follows `quorin-gateway service` on the command line, in UTF-8. Returns the error
// text if it is malformed.
[[nodiscard]] std::variant<ServiceArguments, std::string>
parseServiceArguments(const std::vector<std::string>& arguments);

} // namespace quorin
