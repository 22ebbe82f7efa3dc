#pragma once

#include <QtGlobal>

// The only exported function of the library. Runs a complete gateway on the calling thread and
// returns 0 after the stop command on the control pipe.
//
// `argc` must be 3; `argv` contains the program's name, the path of the settings file (UTF-8) and
// "primary" or "secondary".
//
// A fatal error ends the process with exit code 1, or 2 if another gateway runs on this machine.
// Tasks of the host in Qt's global thread pool do not delay that. The host must not have a
// QCoreApplication: this function creates it, and no other thread may use it during the call.
extern "C" Q_DECL_EXPORT int QuorinGatewayHttpMainFunc(int argc, char** argv);
