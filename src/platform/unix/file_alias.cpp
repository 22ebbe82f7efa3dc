#include "platform/file_alias.h"

namespace quorin::platform {

bool isFileAlias(const QString& /*folder*/, const QString& /*path*/) {
    return false;
}

} // namespace quorin::platform
