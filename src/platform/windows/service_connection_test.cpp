#include "platform/windows/service_connection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::Field;
using testing::Ge;

constexpr std::chrono::seconds kDeadline{60};

// The service manager's side. The functions receive no user data.
struct Manager {
    std::mutex mutex;
    std::condition_variable changed;
    DWORD dispatchError = ERROR_SUCCESS;
    DWORD registerError = ERROR_SUCCESS;
    BOOL statusResult = TRUE;
    std::wstring name;
    LPHANDLER_FUNCTION_EX handler = nullptr;
    void* context = nullptr;
    std::vector<SERVICE_STATUS> reports;
    std::optional<UINT> endCode;

    DWORD control(DWORD control) const { return handler(control, 0, nullptr, context); }

    // Waits until `condition` is met. Returns false after the deadline.
    template<typename Condition>
    [[nodiscard]] bool waitUntil(Condition condition) {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, kDeadline, condition);
    }

    std::vector<DWORD> states() {
        const std::lock_guard lock(mutex);
        std::vector<DWORD> states;
        for (const SERVICE_STATUS& report : reports) {
            if (states.empty() || states.back() != report.dwCurrentState) {
                states.push_back(report.dwCurrentState);
            }
        }
        return states;
    }

    SERVICE_STATUS last() {
        const std::lock_guard lock(mutex);
        return reports.back();
    }
};
Manager* manager = nullptr;

ServiceProcessFunctions fakeFunctions() {
    ServiceProcessFunctions functions;
    functions.dispatch = [](const SERVICE_TABLE_ENTRYW* table) -> BOOL {
        if (manager->dispatchError != ERROR_SUCCESS) {
            SetLastError(manager->dispatchError);
            return FALSE;
        }
        table[0].lpServiceProc(0, nullptr);
        return TRUE;
    };
    functions.registerHandler = [](const wchar_t* name, LPHANDLER_FUNCTION_EX handler,
                                   void* context) -> SERVICE_STATUS_HANDLE {
        manager->name = name;
        manager->handler = handler;
        manager->context = context;
        SetLastError(manager->registerError);
        return manager->registerError == ERROR_SUCCESS
                   ? reinterpret_cast<SERVICE_STATUS_HANDLE>(manager)
                   : nullptr;
    };
    functions.setStatus = [](SERVICE_STATUS_HANDLE handle, SERVICE_STATUS* status) -> BOOL {
        EXPECT_EQ(handle, reinterpret_cast<SERVICE_STATUS_HANDLE>(manager));
        const std::lock_guard lock(manager->mutex);
        manager->reports.push_back(*status);
        manager->changed.notify_all();
        return manager->statusResult;
    };
    functions.endProcess = [](UINT code) {
        const std::lock_guard lock(manager->mutex);
        manager->endCode = code;
        manager->changed.notify_all();
    };
    return functions;
}

class ServiceConnectionTest : public testing::Test {
protected:
    ServiceConnectionTest() { manager = &manager_; }
    ~ServiceConnectionTest() override { manager = nullptr; }

    // The result of the stop function, as soon as a test has set it.
    bool awaitStopResult() {
        std::unique_lock lock(manager_.mutex);
        ++stopCalls_;
        manager_.changed.notify_all();
        manager_.changed.wait(lock, [this] { return stopResult_.has_value(); });
        return *stopResult_;
    }
    void setStopResult(bool result) {
        const std::lock_guard lock(manager_.mutex);
        stopResult_ = result;
        manager_.changed.notify_all();
    }

    Manager manager_;
    std::optional<bool> stopResult_;
    int stopCalls_ = 0;
    ServiceConnection connection_{[this] { return awaitStopResult(); },
                                  fakeFunctions(),
                                  {std::chrono::milliseconds(1), std::chrono::milliseconds(1)}};
};

TEST_F(ServiceConnectionTest, ReportsStartAndEnd) {
    ASSERT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(manager_.name, L"QuorinTest");
    EXPECT_EQ(manager_.last().dwCurrentState, DWORD{SERVICE_START_PENDING});
    EXPECT_EQ(manager_.last().dwControlsAccepted, 0u) << "cannot be stopped yet";
    EXPECT_GE(manager_.last().dwWaitHint, 20'000u);
    connection_.reportRunning();
    EXPECT_EQ(manager_.last().dwControlsAccepted,
              DWORD{SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_PRESHUTDOWN});
    connection_.reportStopped(0);
    EXPECT_EQ(manager_.last().dwWin32ExitCode, DWORD{NO_ERROR});
    EXPECT_EQ(manager_.last().dwControlsAccepted, 0u);
    EXPECT_THAT(manager_.states(),
                ElementsAre(SERVICE_START_PENDING, SERVICE_RUNNING, SERVICE_STOPPED));
    EXPECT_THAT(manager_.reports,
                Each(Field(&SERVICE_STATUS::dwServiceType, DWORD{SERVICE_WIN32_OWN_PROCESS})));
    EXPECT_EQ(stopCalls_, 0);
}

TEST_F(ServiceConnectionTest, ReportsExitCodeOfFailedStart) {
    ASSERT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SUCCESS});
    connection_.reportStopped(2);
    connection_.reportStopped(0);
    connection_.reportRunning();
    EXPECT_THAT(manager_.states(), ElementsAre(SERVICE_START_PENDING, SERVICE_STOPPED));
    EXPECT_EQ(manager_.last().dwWin32ExitCode, DWORD{ERROR_SERVICE_SPECIFIC_ERROR});
    EXPECT_EQ(manager_.last().dwServiceSpecificExitCode, 2u);
}

TEST_F(ServiceConnectionTest, ReportsProgressWhileStopping) {
    ASSERT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SUCCESS});
    connection_.reportRunning();
    EXPECT_EQ(manager_.control(SERVICE_CONTROL_STOP), DWORD{NO_ERROR});
    EXPECT_EQ(manager_.last().dwCurrentState, DWORD{SERVICE_STOP_PENDING})
        << "before the handler returns";
    EXPECT_EQ(manager_.control(SERVICE_CONTROL_STOP), DWORD{NO_ERROR});
    EXPECT_TRUE(manager_.waitUntil([this] { return stopCalls_ == 1; }));
    setStopResult(true);
    EXPECT_TRUE(manager_.waitUntil([this] { return manager_.reports.size() >= 8; }));
    connection_.reportStopped(0);
    DWORD checkpoint = 0;
    for (const SERVICE_STATUS& report : manager_.reports) {
        if (report.dwCurrentState == SERVICE_STOP_PENDING) {
            EXPECT_EQ(report.dwCheckPoint, ++checkpoint);
            EXPECT_GT(report.dwWaitHint, 1'000u) << "longer than the interval";
        } else if (report.dwCurrentState != SERVICE_START_PENDING) {
            EXPECT_EQ(report.dwCheckPoint, 0u);
        }
    }
    EXPECT_GE(checkpoint, 6u);
    EXPECT_EQ(stopCalls_, 1);
    EXPECT_EQ(manager_.last().dwCurrentState, DWORD{SERVICE_STOPPED});
}

TEST_F(ServiceConnectionTest, StopsBeforeShutdown) {
    ASSERT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SUCCESS});
    connection_.reportRunning();
    EXPECT_EQ(manager_.control(SERVICE_CONTROL_PRESHUTDOWN), DWORD{NO_ERROR});
    EXPECT_TRUE(manager_.waitUntil([this] { return stopCalls_ == 1; }));
    setStopResult(true);
    connection_.reportStopped(0);
    EXPECT_THAT(manager_.states(), ElementsAre(SERVICE_START_PENDING, SERVICE_RUNNING,
                                               SERVICE_STOP_PENDING, SERVICE_STOPPED));
}

TEST_F(ServiceConnectionTest, AnswersOtherControls) {
    ASSERT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SUCCESS});
    connection_.reportRunning();
    EXPECT_EQ(manager_.control(SERVICE_CONTROL_INTERROGATE), DWORD{NO_ERROR});
    EXPECT_EQ(manager_.control(SERVICE_CONTROL_PAUSE), DWORD{ERROR_CALL_NOT_IMPLEMENTED});
    EXPECT_EQ(manager_.last().dwCurrentState, DWORD{SERVICE_RUNNING});
    connection_.reportStopped(0);
}

TEST_F(ServiceConnectionTest, EndsProcessIfStopFails) {
    ASSERT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SUCCESS});
    connection_.reportRunning();
    setStopResult(false);
    manager_.control(SERVICE_CONTROL_STOP);
    EXPECT_TRUE(manager_.waitUntil([this] { return manager_.endCode.has_value(); }));
    EXPECT_EQ(manager_.endCode, 1u);
    EXPECT_EQ(manager_.last().dwCurrentState, DWORD{SERVICE_STOPPED})
        << "otherwise the system restarts the service";
    EXPECT_EQ(manager_.last().dwServiceSpecificExitCode, 1u);
    connection_.reportStopped(0); // if it was not reported, the destructor would wait for it
}

TEST_F(ServiceConnectionTest, ReturnsErrorIfStartedByHand) {
    manager_.dispatchError = ERROR_FAILED_SERVICE_CONTROLLER_CONNECT;
    EXPECT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_FAILED_SERVICE_CONTROLLER_CONNECT});
    connection_.reportRunning();
    connection_.reportStopped(0);
    EXPECT_TRUE(manager_.reports.empty());
}

TEST_F(ServiceConnectionTest, ReturnsErrorIfHandlerIsRefused) {
    manager_.registerError = ERROR_SERVICE_DOES_NOT_EXIST;
    EXPECT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SERVICE_DOES_NOT_EXIST});
    EXPECT_TRUE(manager_.reports.empty());
}

TEST_F(ServiceConnectionTest, WorksIfStatusCannotBeReported) {
    manager_.statusResult = FALSE;
    ASSERT_EQ(connection_.connect(u"QuorinTest"_s), DWORD{ERROR_SUCCESS});
    connection_.reportRunning();
    manager_.control(SERVICE_CONTROL_STOP);
    EXPECT_TRUE(manager_.waitUntil([this] { return stopCalls_ == 1; }));
    setStopResult(true);
    connection_.reportStopped(0);
}

} // namespace
} // namespace quorin::platform
