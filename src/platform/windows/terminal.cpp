#include "platform/terminal.h"

#include "platform/windows/system.h"

namespace quorin::platform {

bool isErrorOutputTerminal() noexcept {
    DWORD mode = 0;
    return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != FALSE;
}

} // namespace quorin::platform
