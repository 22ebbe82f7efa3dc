#include "entry/main_func.h"

#include "entry/gateway_run.h"
#include "platform/own_libraries.h"

#include <QCoreApplication>

#include <cstdlib>

int QuorinGatewayHttpMainFunc(int argc, char** argv) {
    constexpr int duplicateInstance = 2;
    // std::exit() does not destroy the application object, whose destructor would wait for the
    // host's own tasks on Qt's global thread pool.
    QCoreApplication application(argc, argv);
    quorin::platform::useOwnLibraries();
    switch (quorin::runGateway(application, argc, argv)) {
    case quorin::RunOutcome::Failed:
        std::exit(EXIT_FAILURE);
    case quorin::RunOutcome::DuplicateInstance:
        std::exit(duplicateInstance);
    case quorin::RunOutcome::Stopped:
        break;
    }
    return 0;
}
