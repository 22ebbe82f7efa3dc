#pragma once

#include <QCoreApplication>

// Creates the application object that Qt's sockets and event loops need. Call it from
// LLVMFuzzerInitialize.
inline void createApplication() {
    static int argumentCount = 1;
    static char name[] = "fuzzer";
    static char* arguments[] = {name, nullptr};
    static const QCoreApplication application(argumentCount, arguments);
}
