// press_ctrl_c PROCESS: as if somebody pressed Ctrl-C at the console of that process. Exit code 0
// when it was pressed.

#include "platform/windows/system.h"

#include <cstdlib>

namespace {

// A process that has just been started gets its console in a while.
bool attach(DWORD process) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        if (AttachConsole(process) != FALSE) {
            return true;
        }
        Sleep(100);
    }
    return false;
}

} // namespace

int main(int argc, char** argv) {
    const DWORD process = argc == 2 ? std::strtoul(argv[1], nullptr, 10) : 0;
    FreeConsole();
    const bool isPressed = attach(process) && SetConsoleCtrlHandler(nullptr, TRUE) != FALSE &&
                           GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) != FALSE;
    return isPressed ? EXIT_SUCCESS : EXIT_FAILURE;
}
