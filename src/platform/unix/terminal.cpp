#include "platform/terminal.h"

#include <unistd.h>

namespace quorin::platform {

bool isErrorOutputTerminal() noexcept {
    return isatty(STDERR_FILENO) == 1;
}

} // namespace quorin::platform
