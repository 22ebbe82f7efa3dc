// press_ctrl_c PROCESS: sends Ctrl-C to the console of the process with that id. Exits with 0 if it
// was sent.

#include "platform/windows/system.h"

#include <cstdlib>

namespace {

// Retries because a process that was just started may not have its console yet.
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
