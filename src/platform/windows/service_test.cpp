#include "platform/service.h"

#include "platform/windows/service_functions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// Records the calls. The functions receive no user data.
struct Manager {
    std::vector<std::string> calls;
    std::string failing;                  // this call fails ...
    DWORD error = ERROR_INVALID_FUNCTION; // ... with this error
    DWORD state = SERVICE_RUNNING;
    int pollsUntilStopped = 2;
    bool processEnds = true;
    DWORD processWait = 0;
    DWORD slept = 0;

    std::wstring name;
    std::wstring displayName;
    std::wstring command = L"\"C:\\a b\\quorin-gateway.exe\" service run --name QuorinTest s.xml";
    std::wstring account;
    DWORD type = 0;
    DWORD startType = 0;
    std::wstring description;
    BOOL isDelayed = FALSE;
    std::vector<SC_ACTION> actions;
    DWORD resetPeriod = 0;
    BOOL restartsAfterErrors = TRUE;
    DWORD preshutdownMs = 0;
    DWORD identifierType = 0;

    bool fails(const std::string& call) {
        calls.push_back(call);
        if (call == failing) {
            SetLastError(error);
            return true;
        }
        return false;
    }
};
Manager* manager = nullptr;

constexpr DWORD kProcessId = 4711;

template<typename Handle>
Handle fakeHandle() {
    static int object = 0;
    return reinterpret_cast<Handle>(&object);
}

BOOL recordConfig(DWORD level, void* value) {
    switch (level) {
    case SERVICE_CONFIG_DESCRIPTION:
        manager->description = static_cast<SERVICE_DESCRIPTIONW*>(value)->lpDescription;
        return !manager->fails("description");
    case SERVICE_CONFIG_DELAYED_AUTO_START_INFO:
        manager->isDelayed =
            static_cast<SERVICE_DELAYED_AUTO_START_INFO*>(value)->fDelayedAutostart;
        return !manager->fails("delayed start");
    case SERVICE_CONFIG_FAILURE_ACTIONS: {
        const auto& actions = *static_cast<SERVICE_FAILURE_ACTIONSW*>(value);
        manager->actions.assign(actions.lpsaActions, actions.lpsaActions + actions.cActions);
        manager->resetPeriod = actions.dwResetPeriod;
        return !manager->fails("failure actions");
    }
    case SERVICE_CONFIG_FAILURE_ACTIONS_FLAG:
        manager->restartsAfterErrors =
            static_cast<SERVICE_FAILURE_ACTIONS_FLAG*>(value)->fFailureActionsOnNonCrashFailures;
        return !manager->fails("failure actions flag");
    case SERVICE_CONFIG_PRESHUTDOWN_INFO:
        manager->preshutdownMs =
            static_cast<SERVICE_PRESHUTDOWN_INFO*>(value)->dwPreshutdownTimeout;
        return !manager->fails("preshutdown");
    case SERVICE_CONFIG_SERVICE_SID_INFO:
        manager->identifierType = static_cast<SERVICE_SID_INFO*>(value)->dwServiceSidType;
        return !manager->fails("identifier");
    default:
        ADD_FAILURE() << "unexpected level " << level;
        return FALSE;
    }
}

ServiceManagerFunctions fakeFunctions() {
    ServiceManagerFunctions functions;
    functions.openManager = [](const wchar_t*, const wchar_t*, DWORD) {
        return manager->fails("open manager") ? nullptr : fakeHandle<SC_HANDLE>();
    };
    functions.createService = [](SC_HANDLE, const wchar_t* name, const wchar_t* displayName, DWORD,
                                 DWORD type, DWORD startType, DWORD, const wchar_t* command,
                                 const wchar_t*, DWORD*, const wchar_t*, const wchar_t* account,
                                 const wchar_t*) {
        manager->name = name;
        manager->displayName = displayName;
        manager->type = type;
        manager->startType = startType;
        manager->command = command;
        manager->account = account;
        return manager->fails("create") ? nullptr : fakeHandle<SC_HANDLE>();
    };
    functions.changeConfig = [](SC_HANDLE, DWORD level, void* value) {
        return recordConfig(level, value);
    };
    functions.changeMainConfig = [](SC_HANDLE, DWORD type, DWORD startType, DWORD errorControl,
                                    const wchar_t* command, const wchar_t* loadOrderGroup, DWORD*,
                                    const wchar_t* dependencies, const wchar_t* account,
                                    const wchar_t* password, const wchar_t* displayName) -> BOOL {
        manager->command = command;
        for (const DWORD value : {type, startType, errorControl}) {
            EXPECT_EQ(value, DWORD{SERVICE_NO_CHANGE});
        }
        for (const wchar_t* text : {loadOrderGroup, dependencies, account, password, displayName}) {
            EXPECT_EQ(text, nullptr);
        }
        return !manager->fails("change");
    };
    functions.openService = [](SC_HANDLE, const wchar_t* name, DWORD) {
        manager->name = name;
        return manager->fails("open") ? nullptr : fakeHandle<SC_HANDLE>();
    };
    functions.queryConfig = [](SC_HANDLE, QUERY_SERVICE_CONFIGW* config, DWORD, DWORD*) -> BOOL {
        config->lpBinaryPathName = manager->command.data();
        return !manager->fails("query");
    };
    functions.queryStatus = [](SC_HANDLE, SC_STATUS_TYPE, BYTE* buffer, DWORD, DWORD*) -> BOOL {
        if (manager->failing == "query status") {
            SetLastError(manager->error);
            return FALSE;
        }
        auto& status = *reinterpret_cast<SERVICE_STATUS_PROCESS*>(buffer);
        status.dwCurrentState = manager->state;
        status.dwProcessId = manager->state == SERVICE_STOPPED ? 0 : kProcessId;
        if (manager->state == SERVICE_STOP_PENDING && --manager->pollsUntilStopped == 0) {
            manager->state = SERVICE_STOPPED;
        }
        return TRUE;
    };
    functions.control = [](SC_HANDLE, DWORD control, SERVICE_STATUS*) -> BOOL {
        EXPECT_EQ(control, DWORD{SERVICE_CONTROL_STOP});
        if (manager->state == SERVICE_RUNNING) {
            manager->calls.push_back("stop");
            manager->state = SERVICE_STOP_PENDING;
        }
        return TRUE;
    };
    functions.openProcess = [](DWORD access, BOOL, DWORD id) -> HANDLE {
        EXPECT_EQ(access, DWORD{SYNCHRONIZE});
        EXPECT_EQ(id, kProcessId);
        // Any object of the system that can be closed.
        return manager->fails("open process") ? nullptr
                                              : CreateEventW(nullptr, TRUE, FALSE, nullptr);
    };
    functions.wait = [](HANDLE, DWORD time) -> DWORD {
        manager->calls.push_back("wait");
        EXPECT_EQ(manager->state, DWORD{SERVICE_STOPPED});
        manager->processWait = time;
        return manager->processEnds ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
    };
    functions.deleteService = [](SC_HANDLE) -> BOOL { return !manager->fails("delete"); };
    functions.close = [](SC_HANDLE) -> BOOL {
        manager->calls.push_back("close");
        return TRUE;
    };
    functions.sleep = [](DWORD time) { manager->slept += time; };
    return functions;
}

class ServiceTest : public testing::Test {
protected:
    ServiceTest() { manager = &manager_; }
    ~ServiceTest() override { manager = nullptr; }

    std::optional<ServiceError> install() const {
        return installServiceWith(fakeFunctions(), definition_);
    }

    std::optional<ServiceError> update() const {
        return updateServiceWith(fakeFunctions(), definition_);
    }

    static std::optional<ServiceError> stop() {
        return stopServiceWith(fakeFunctions(), u"QuorinTest"_s);
    }

    Manager manager_;
    ServiceDefinition definition_{
        u"QuorinTest"_s,
        u"Quorin Test"_s,
        u"Serves files."_s,
        {u"C:\\Program Files\\Quorin\\quorin-gateway.exe"_s, u"service"_s, u"my settings.xml"_s}};
};

TEST_F(ServiceTest, InstallsAutomaticService) {
    ASSERT_EQ(install(), std::nullopt);
    EXPECT_EQ(manager_.name, L"QuorinTest");
    EXPECT_EQ(manager_.displayName, L"Quorin Test");
    EXPECT_EQ(manager_.command,
              L"\"C:\\Program Files\\Quorin\\quorin-gateway.exe\" \"service\" \"my settings.xml\"");
    EXPECT_EQ(manager_.account, L"NT SERVICE\\QuorinTest");
    EXPECT_EQ(manager_.type, DWORD{SERVICE_WIN32_OWN_PROCESS});
    EXPECT_EQ(manager_.startType, DWORD{SERVICE_AUTO_START});
    EXPECT_EQ(manager_.description, L"Serves files.");
    EXPECT_EQ(manager_.isDelayed, TRUE);
    EXPECT_EQ(manager_.preshutdownMs, 180'000u);
    EXPECT_EQ(manager_.identifierType, DWORD{SERVICE_SID_TYPE_UNRESTRICTED});
}

TEST_F(ServiceTest, RestartsOnlyAfterCrashes) {
    ASSERT_EQ(install(), std::nullopt);
    EXPECT_EQ(manager_.restartsAfterErrors, FALSE);
    std::vector<DWORD> delays;
    for (const SC_ACTION& action : manager_.actions) {
        EXPECT_EQ(action.Type, SC_ACTION_RESTART);
        delays.push_back(action.Delay);
    }
    EXPECT_THAT(delays, ElementsAre(5'000u, 30'000u, 60'000u));
    EXPECT_EQ(manager_.resetPeriod, 86'400u);
}

TEST_F(ServiceTest, RemovesServiceIfConfigurationFails) {
    for (const char* call : {"description", "delayed start", "failure actions",
                             "failure actions flag", "preshutdown", "identifier"}) {
        manager_ = {};
        manager_.failing = call;
        const auto error = install();
        ASSERT_TRUE(error) << call;
        EXPECT_EQ(error->kind, ServiceError::Kind::Other);
        EXPECT_THAT(error->text.toStdString(), HasSubstr("cannot "));
        EXPECT_EQ(std::count(manager_.calls.begin(), manager_.calls.end(), "delete"), 1) << call;
        EXPECT_EQ(std::count(manager_.calls.begin(), manager_.calls.end(), "close"), 2) << call;
    }
}

TEST_F(ServiceTest, IgnoresSettingsThatSystemLacks) {
    manager_.failing = "delayed start";
    manager_.error = ERROR_INVALID_LEVEL;
    EXPECT_EQ(install(), std::nullopt);
    EXPECT_EQ(manager_.identifierType, DWORD{SERVICE_SID_TYPE_UNRESTRICTED})
        << "the settings after it are made";
}

TEST_F(ServiceTest, ReportsDeniedAccess) {
    manager_.failing = "open manager";
    manager_.error = ERROR_ACCESS_DENIED;
    for (const auto& error : {install(), checkInstallPermissionWith(fakeFunctions()),
                              uninstallServiceWith(fakeFunctions(), u"QuorinTest"_s)}) {
        ASSERT_TRUE(error);
        EXPECT_EQ(error->kind, ServiceError::Kind::AccessDenied);
        EXPECT_THAT(error->text.toStdString(), HasSubstr("cannot open the service manager: "));
    }
    EXPECT_THAT(manager_.calls, ElementsAre("open manager", "open manager", "open manager"));
}

TEST_F(ServiceTest, ReportsExistingService) {
    manager_.failing = "create";
    manager_.error = ERROR_SERVICE_EXISTS;
    const auto error = install();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, ServiceError::Kind::AlreadyExists);
    EXPECT_THAT(manager_.calls, ElementsAre("open manager", "create", "close"));
}

TEST_F(ServiceTest, RefusesCommandWithVariable) {
    definition_.command += u"C:\\%SystemRoot%\\settings.xml"_s;
    const auto error = install();
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text.toStdString(), HasSubstr("%SystemRoot%"));
    EXPECT_THAT(manager_.calls, ElementsAre());
    definition_.command.last() = u"C:\\100% of %no such variable%\\settings.xml"_s;
    EXPECT_EQ(install(), std::nullopt);
}

TEST_F(ServiceTest, UpdateChangesOnlyCommand) {
    EXPECT_EQ(update(), std::nullopt);
    EXPECT_EQ(manager_.name, L"QuorinTest");
    EXPECT_EQ(manager_.command,
              L"\"C:\\Program Files\\Quorin\\quorin-gateway.exe\" \"service\" \"my settings.xml\"");
    EXPECT_THAT(manager_.calls,
                ElementsAre("open manager", "open", "query", "change", "close", "close"));
}

TEST_F(ServiceTest, UpdateRefusesServicesOfOthers) {
    manager_.command = L"C:\\Windows\\System32\\spoolsv.exe";
    const auto error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->text.toStdString(), "the service QuorinTest does not run a gateway");
    EXPECT_THAT(manager_.calls, ElementsAre("open manager", "open", "query", "close", "close"));
}

TEST_F(ServiceTest, UpdateReportsEachFailure) {
    definition_.command += u"%SystemRoot%"_s;
    auto error = update();
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text.toStdString(), HasSubstr("%SystemRoot%"));
    definition_.command.removeLast();
    manager_.failing = "open";
    manager_.error = ERROR_SERVICE_DOES_NOT_EXIST;
    error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, ServiceError::Kind::NotFound);
    manager_.failing = "change";
    manager_.error = ERROR_SERVICE_MARKED_FOR_DELETE;
    error = update();
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text.toStdString(), HasSubstr("cannot change the service: "));
    manager_.failing = "open manager";
    manager_.error = ERROR_ACCESS_DENIED;
    error = update();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, ServiceError::Kind::AccessDenied);
}

TEST_F(ServiceTest, StopWaitsUntilProcessHasEnded) {
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_EQ(manager_.name, L"QuorinTest");
    EXPECT_THAT(manager_.calls, ElementsAre("open manager", "open", "query", "open process", "stop",
                                            "wait", "close", "close"));
}

TEST_F(ServiceTest, StopWaitsWithoutLimitForRequests) {
    manager_.pollsUntilStopped = 1'000'000;
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_EQ(manager_.state, DWORD{SERVICE_STOPPED});
}

TEST_F(ServiceTest, StopReportsProcessThatDoesNotEnd) {
    manager_.processEnds = false;
    const auto error = stop();
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text.toStdString(), HasSubstr("its process has not ended"));
    EXPECT_EQ(manager_.processWait, 30'000u);
}

TEST_F(ServiceTest, StopReportsFailedQuery) {
    manager_.failing = "query status";
    const auto error = stop();
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text.toStdString(), HasSubstr("cannot query the service: "));
}

TEST_F(ServiceTest, StopDoesNotNeedAccessToProcess) {
    manager_.failing = "open process";
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_EQ(manager_.state, DWORD{SERVICE_STOPPED});
}

TEST_F(ServiceTest, StopAcceptsStoppedService) {
    manager_.state = SERVICE_STOPPED;
    EXPECT_EQ(stop(), std::nullopt);
    EXPECT_THAT(manager_.calls, ElementsAre("open manager", "open", "query", "close", "close"));
}

TEST_F(ServiceTest, StopRefusesServicesOfOthers) {
    manager_.command = L"C:\\Windows\\System32\\spoolsv.exe";
    ASSERT_TRUE(stop());
    EXPECT_EQ(manager_.state, DWORD{SERVICE_RUNNING});
}

TEST_F(ServiceTest, UninstallWaitsUntilProcessHasEnded) {
    EXPECT_EQ(uninstallServiceWith(fakeFunctions(), u"QuorinTest"_s), std::nullopt);
    EXPECT_EQ(manager_.name, L"QuorinTest");
    EXPECT_THAT(manager_.calls, ElementsAre("open manager", "open", "query", "open process", "stop",
                                            "wait", "delete", "close", "close"));
    EXPECT_EQ(manager_.state, DWORD{SERVICE_STOPPED});
}

TEST_F(ServiceTest, UninstallDoesNotStopStoppedService) {
    manager_.state = SERVICE_STOPPED;
    EXPECT_EQ(uninstallServiceWith(fakeFunctions(), u"QuorinTest"_s), std::nullopt);
    EXPECT_THAT(manager_.calls,
                ElementsAre("open manager", "open", "query", "delete", "close", "close"));
    EXPECT_EQ(manager_.slept, 0u);
}

TEST_F(ServiceTest, UninstallRefusesServicesOfOthers) {
    for (const wchar_t* command :
         {L"C:\\Windows\\System32\\spoolsv.exe", L"svchost.exe -k service run",
          L"\"C:\\service run\" run service", L""}) {
        manager_ = {};
        manager_.command = command;
        const auto error = uninstallServiceWith(fakeFunctions(), u"Spooler"_s);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->text.toStdString(), "the service Spooler does not run a gateway");
        EXPECT_THAT(manager_.calls, ElementsAre("open manager", "open", "query", "close", "close"));
    }
    manager_ = {};
    manager_.failing = "query";
    EXPECT_TRUE(uninstallServiceWith(fakeFunctions(), u"Spooler"_s));
    EXPECT_EQ(manager_.state, DWORD{SERVICE_RUNNING});
}

TEST_F(ServiceTest, UninstallGivesUpWaitingAfter3Minutes) {
    manager_.pollsUntilStopped = 1'000'000;
    const auto error = uninstallServiceWith(fakeFunctions(), u"QuorinTest"_s);
    ASSERT_TRUE(error);
    EXPECT_THAT(error->text.toStdString(), HasSubstr("still stopping"));
    EXPECT_EQ(manager_.slept, 180'000u);
    EXPECT_EQ(std::count(manager_.calls.begin(), manager_.calls.end(), "delete"), 1);
}

TEST_F(ServiceTest, UninstallReportsEachFailure) {
    manager_.failing = "open";
    manager_.error = ERROR_SERVICE_DOES_NOT_EXIST;
    auto error = uninstallServiceWith(fakeFunctions(), u"QuorinTest"_s);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, ServiceError::Kind::NotFound);
    manager_.failing = "delete";
    manager_.error = ERROR_SERVICE_MARKED_FOR_DELETE;
    error = uninstallServiceWith(fakeFunctions(), u"QuorinTest"_s);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->kind, ServiceError::Kind::Other);
    EXPECT_THAT(error->text.toStdString(), HasSubstr("cannot remove the service: "));
}

} // namespace
} // namespace quorin::platform
