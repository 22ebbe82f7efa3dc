#pragma once

#include <QtGlobal>

// The library's one export: runs a complete gateway on the calling thread and returns 0 after it
// was stopped through the control channel.
//
// `argc` is 3; `argv` holds the program's name, the path of the settings file (UTF-8) and "primary"
// or "secondary".
//
// Fatal errors end the whole process with exit code 1, or 2 if another gateway runs on this
// machine; tasks of the host on Qt's global thread pool do not delay that. No other thread of the
// host may use Qt's application object meanwhile.
extern "C" Q_DECL_EXPORT int QuorinGatewayHttpMainFunc(int argc, char** argv);
