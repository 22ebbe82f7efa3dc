#include "platform/own_libraries.h"

namespace quorin::platform {

void useOwnLibraries() {}

} // namespace quorin::platform
