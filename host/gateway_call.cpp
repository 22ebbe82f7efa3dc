#include "gateway_call.h"

#include "exit_codes.h"
#include "platform/application_report.h"
#include "platform/shared_library.h"
#include "stop_command.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QThread>
#include <QVariant>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>
#include <vector>

namespace quorin {

namespace {

// The observer of the call in progress. Qt and the C runtime pass no data to the functions below.
GatewayObserver* observerOfCall = nullptr;

// The library creates the application object. The event is delivered as soon as the gateway, which
// then listens, runs its event loop.
void onApplicationCreated() {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [] {
            if (observerOfCall != nullptr) {
                observerOfCall->onStarted();
            }
        },
        Qt::QueuedConnection);
}

// The library ends the process with std::exit() if the start fails.
void onProcessExit() {
    GatewayObserver* const observer = std::exchange(observerOfCall, nullptr);
    const QCoreApplication* const application = QCoreApplication::instance();
    if (observer == nullptr) {
        return;
    }
    QVariant exitCode;
    QString reason;
    if (application != nullptr) {
        exitCode = application->property(platform::kExitCodeProperty);
        reason = application->property(platform::kStartErrorProperty).toString();
    }
    observer->onStartFailed(exitCode.isValid() ? exitCode.toInt() : kFailed, reason);
}

} // namespace

int callGateway(std::string program, std::string settings, std::string group,
                GatewayObserver& observer) {
    using MainFunc = int(int, char**);
    const auto library = platform::SharedLibrary::load(platform::gatewayLibraryName());
    auto* const mainFunc = library.function<MainFunc>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        const std::string reason = std::string("cannot load the gateway library ") +
                                   platform::gatewayLibraryName() + ": " +
                                   platform::SharedLibrary::lastError();
        std::fprintf(stderr, "quorin-gateway: %s\n", reason.c_str());
        observer.onStartFailed(kFailed, QString::fromStdString(reason));
        return kFailed;
    }
    observerOfCall = &observer;
    std::atexit(&onProcessExit);
    qAddPreRoutine(&onApplicationCreated);
    std::vector<char*> arguments{program.data(), settings.data(), group.data(), nullptr};
    const int result = mainFunc(static_cast<int>(arguments.size() - 1), arguments.data());
    observerOfCall = nullptr;
    observer.onStopped();
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
