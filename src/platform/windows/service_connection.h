#pragma once

#include "platform/windows/service_functions.h"
#include "platform/windows/system.h"

#include <QString>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace quorin::platform {

// How often a service that is stopping reports progress, and how long a process whose stop request
// failed may take to end by itself.
struct ServiceTiming {
    std::chrono::milliseconds checkpointInterval = std::chrono::seconds(1);
    std::chrono::milliseconds endTimeout = std::chrono::seconds(10);
};

// Implements ServiceProcess. The dispatcher runs on a thread of its own, so that the main thread is
// free for the gateway. The thread of the service's main function reports progress while the
// service is stopping.
class ServiceConnection {
public:
    explicit ServiceConnection(std::function<bool()> stop,
                               const ServiceProcessFunctions& system = {},
                               ServiceTiming timing = {});
    ~ServiceConnection();

    ServiceConnection(const ServiceConnection&) = delete;
    ServiceConnection& operator=(const ServiceConnection&) = delete;

    // Returns a Windows error code.
    [[nodiscard]] DWORD connect(const QString& name);
    void reportRunning();
    void reportStopped(int exitCode);

private:
    enum class Phase { Connecting, Failed, Starting, Running, Stopping, Stopped };

    static void WINAPI serviceMain(DWORD argumentCount, wchar_t** arguments);
    static DWORD WINAPI handleControl(DWORD control, DWORD type, void* data, void* context);

    void dispatch();
    void serve();
    void stopOnRequest();
    void fail(DWORD error);
    // These require the mutex.
    void enter(Phase phase);
    void report();

    const std::function<bool()> stop_;
    const ServiceProcessFunctions system_;
    const ServiceTiming timing_;
    std::wstring name_;

    std::mutex mutex_;
    std::condition_variable changed_;
    Phase phase_ = Phase::Connecting;
    DWORD error_ = ERROR_SUCCESS;
    SERVICE_STATUS_HANDLE handle_ = nullptr;
    SERVICE_STATUS status_{};

    std::thread dispatcher_;
    std::thread stopper_;
};

} // namespace quorin::platform
