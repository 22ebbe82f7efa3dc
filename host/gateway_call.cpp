#include "gateway_call.h"

#include "platform/application_report.h"
#include "platform/shared_library.h"
#include "stop_command.h"
#include "usage.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>
#include <QVariant>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

namespace quorin {

namespace {

// The observers of the call in progress; empty after its end. Qt and the C runtime pass no data to
// the functions that use them.
std::vector<GatewayObserver*> observersOfCall;

template<typename... Parameters, typename... Arguments>
void notify(void (GatewayObserver::*function)(Parameters...), const Arguments&... arguments) {
    for (GatewayObserver* const observer : observersOfCall) {
        (observer->*function)(arguments...);
    }
}

// The library creates the application object. A gateway enters its event loop when it has started
// completely, and leaves it before it releases what excludes another gateway.
void onApplicationCreated() {
    QCoreApplication* const application = QCoreApplication::instance();
    // Expires in the event loop, and therefore after the loop has been entered.
    QTimer::singleShot(0, application, [] { notify(&GatewayObserver::onStarted); });
    QObject::connect(application, &QCoreApplication::aboutToQuit, application,
                     [] { notify(&GatewayObserver::onStopping); });
}

// The library ends the process with std::exit() if the start fails.
void onProcessExit() {
    const QCoreApplication* const application = QCoreApplication::instance();
    QVariant exitCode;
    QString reason;
    if (application != nullptr) {
        exitCode = application->property(platform::kExitCodeProperty);
        reason = application->property(platform::kStartErrorProperty).toString();
    }
    notify(&GatewayObserver::onStartFailed, exitCode.isValid() ? exitCode.toInt() : kFailed,
           reason);
    observersOfCall.clear();
}

} // namespace

int callGateway(GatewayArguments arguments, std::vector<GatewayObserver*> observers) {
    observersOfCall = std::move(observers);
    using MainFunc = int(int, char**);
    const auto library = platform::SharedLibrary::load(platform::gatewayLibraryName());
    auto* const mainFunc = library.function<MainFunc>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        const std::string reason = std::string("cannot load the gateway library ") +
                                   platform::gatewayLibraryName() + ": " +
                                   platform::SharedLibrary::lastError();
        std::fprintf(stderr, "quorin-gateway: %s\n", reason.c_str());
        notify(&GatewayObserver::onStartFailed, static_cast<int>(kFailed),
               QString::fromStdString(reason));
        observersOfCall.clear();
        return kFailed;
    }
    notify(&GatewayObserver::onStarting);
    std::atexit(&onProcessExit);
    qAddPreRoutine(&onApplicationCreated);
    std::vector<char*> values{arguments.program.data(), arguments.settings.data(),
                              arguments.group.data(), nullptr};
    const int result = mainFunc(static_cast<int>(values.size() - 1), values.data());
    notify(&GatewayObserver::onStopped);
    observersOfCall.clear();
    return result;
}

bool stopOwnGateway() {
    bool isStopping = false;
    const std::unique_ptr<QThread> thread(QThread::create([&isStopping] {
        isStopping = sendStopCommand(StopTarget::GatewayOfThisProcess) == StopResult::Delivered;
    }));
    thread->start();
    thread->wait();
    return isStopping;
}

} // namespace quorin
