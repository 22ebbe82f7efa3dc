// A host that calls the gateway library while a task of its own, which never ends, runs on Qt's
// global thread pool.

#include "platform/shared_library.h"

#include <QThread>
#include <QThreadPool>

#include <cstdio>

int main(int argc, char** argv) {
    const auto library =
        quorin::platform::SharedLibrary::load(quorin::platform::gatewayLibraryName());
    auto* const mainFunc = library.function<int(int, char**)>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        std::fprintf(stderr, "busy host: %s\n", quorin::platform::SharedLibrary::lastError());
        return 99;
    }
    QThreadPool::globalInstance()->start([] {
        while (true) {
            QThread::sleep(1);
        }
    });
    return mainFunc(argc, argv);
}
