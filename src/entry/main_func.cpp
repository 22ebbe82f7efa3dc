#include "entry/main_func.h"

#include "entry/gateway_run.h"
#include "platform/application_report.h"
#include "platform/own_libraries.h"

#include <QCoreApplication>
#include <QVariant>

#include <cstdlib>

namespace {

[[noreturn]] void endProcess(QCoreApplication& application, int exitCode) {
    application.setProperty(quorin::platform::kExitCodeProperty, exitCode);
    std::exit(exitCode);
}

} // namespace

int QuorinGatewayHttpMainFunc(int argc, char** argv) {
    constexpr int duplicateInstance = 2;
    // std::exit() does not destroy the application object, whose destructor would wait for the
    // host's own tasks on Qt's global thread pool.
    QCoreApplication application(argc, argv);
    quorin::platform::useOwnLibraries();
    switch (quorin::runGateway(application, argc, argv)) {
    case quorin::RunOutcome::Failed:
        endProcess(application, EXIT_FAILURE);
    case quorin::RunOutcome::DuplicateInstance:
        endProcess(application, duplicateInstance);
    case quorin::RunOutcome::Stopped:
        break;
    }
    return 0;
}
