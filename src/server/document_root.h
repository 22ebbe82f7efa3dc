#pragma once

#include "platform/folders.h"

#include <QString>

namespace quorin {

inline constexpr QStringView kDocumentRoot = u"/QuorinGatewayHttp/wwwroot";

// Returns the folder of the files that this machine's gateway serves.
[[nodiscard]] inline QString documentRoot() {
    return platform::commonApplicationDataFolder() + u'/' + platform::kProductFolder +
           kDocumentRoot;
}

} // namespace quorin
