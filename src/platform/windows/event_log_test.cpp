#include "platform/event_log.h"

#include "platform/windows/event_log_functions.h"

#include <event_messages.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

using testing::ElementsAre;

// Records the calls. The functions receive no user data.
struct EventRecord {
    std::string failing;
    std::vector<std::string> calls;
    std::wstring source;
    WORD type = 0;
    DWORD message = 0;
    std::vector<std::wstring> texts;

    bool fails(const std::string& call) {
        calls.push_back(call);
        return call == failing;
    }
};
EventRecord* record = nullptr;

EventLogFunctions fakeFunctions() {
    EventLogFunctions functions;
    functions.open = [](const wchar_t* server, const wchar_t* source) -> HANDLE {
        EXPECT_EQ(server, nullptr);
        record->source = source;
        return record->fails("open") ? nullptr : record;
    };
    functions.report = [](HANDLE log, WORD type, WORD, DWORD message, PSID, WORD count, DWORD,
                          const wchar_t** texts, void*) -> BOOL {
        EXPECT_EQ(log, record);
        record->type = type;
        record->message = message;
        record->texts.assign(texts, texts + count);
        return !record->fails("report");
    };
    functions.close = [](HANDLE) -> BOOL { return !record->fails("close"); };
    functions.createKey = [](HKEY, const wchar_t*, DWORD, wchar_t*, DWORD, REGSAM,
                             SECURITY_ATTRIBUTES*, HKEY* key, DWORD*) -> LSTATUS {
        *key = HKEY_CURRENT_USER;
        return record->fails("create key") ? ERROR_ACCESS_DENIED : ERROR_SUCCESS;
    };
    functions.setValue = [](HKEY, const wchar_t*, DWORD, DWORD type, const BYTE*,
                            DWORD) -> LSTATUS {
        return record->fails(type == REG_SZ ? "set file" : "set types") ? ERROR_ACCESS_DENIED
                                                                        : ERROR_SUCCESS;
    };
    functions.closeKey = [](HKEY) -> LSTATUS {
        record->calls.push_back("close key");
        return ERROR_SUCCESS;
    };
    functions.deleteTree = [](HKEY, const wchar_t*) -> LSTATUS {
        return record->fails("delete tree") ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
    };
    return functions;
}

class EventLogTest : public testing::Test {
protected:
    EventLogTest() { record = &record_; }
    ~EventLogTest() override { record = nullptr; }

    EventRecord record_;
};

TEST_F(EventLogTest, ReportsTypeMessageAndText) {
    struct Case {
        EventKind kind;
        WORD type;
        DWORD message;
    };
    const Case cases[] = {
        {EventKind::Started, EVENTLOG_INFORMATION_TYPE, QUORIN_EVENT_STARTED},
        {EventKind::Stopped, EVENTLOG_INFORMATION_TYPE, QUORIN_EVENT_STOPPED},
        {EventKind::StartFailed, EVENTLOG_ERROR_TYPE, QUORIN_EVENT_START_FAILED},
        {EventKind::CertificateMissing, EVENTLOG_ERROR_TYPE, QUORIN_EVENT_CERTIFICATE_MISSING},
        {EventKind::CertificateExpires, EVENTLOG_WARNING_TYPE, QUORIN_EVENT_CERTIFICATE_EXPIRES},
    };
    for (const Case& expected : cases) {
        record_ = {};
        reportEventWith(fakeFunctions(), u"QuorinTest"_s, expected.kind, u"größer %1"_s);
        EXPECT_EQ(record_.source, L"QuorinTest");
        EXPECT_EQ(record_.type, expected.type);
        EXPECT_EQ(record_.message, expected.message);
        EXPECT_THAT(record_.texts, ElementsAre(L"gr\u00f6\u00dfer %1"));
        EXPECT_THAT(record_.calls, ElementsAre("open", "report", "close"));
    }
}

TEST_F(EventLogTest, IgnoresFailures) {
    record_.failing = "open";
    reportEventWith(fakeFunctions(), u"QuorinTest"_s, EventKind::Started, u"text"_s);
    EXPECT_THAT(record_.calls, ElementsAre("open"));
    record_ = {};
    record_.failing = "report";
    reportEventWith(fakeFunctions(), u"QuorinTest"_s, EventKind::Started, u"text"_s);
    EXPECT_THAT(record_.calls, ElementsAre("open", "report", "close"));
}

TEST_F(EventLogTest, DiscardsEventsWithoutSource) {
    reportEventWith(fakeFunctions(), QString(), EventKind::Started, u"text"_s);
    EXPECT_TRUE(record_.calls.empty());
}

TEST_F(EventLogTest, ReturnsErrorsOfRegistration) {
    for (const char* call : {"create key", "set file", "set types"}) {
        record_ = {};
        record_.failing = call;
        EXPECT_TRUE(registerEventSourceWith(fakeFunctions(), u"QuorinTest"_s, u"file"_s)) << call;
        const bool isOpen = record_.calls.size() > 1;
        EXPECT_EQ(record_.calls.back() == "close key", isOpen);
    }
    record_ = {};
    EXPECT_FALSE(removeEventSourceWith(fakeFunctions(), u"QuorinTest"_s)) << "not registered";
    record_.failing = "delete tree";
    EXPECT_TRUE(removeEventSourceWith(fakeFunctions(), u"QuorinTest"_s));
}

// Uses the registry of this machine.
TEST(EventSourceTest, IsRegisteredAndRemoved) {
    const QString source = u"QuorinTest%1"_s.arg(GetCurrentProcessId());
    const QString key = u"SYSTEM\\CurrentControlSet\\Services\\EventLog\\Application\\"_s + source;
    const auto value = [&](const wchar_t* name, DWORD flags, void* buffer, DWORD size) {
        return RegGetValueW(HKEY_LOCAL_MACHINE, wide(key), name, flags, nullptr, buffer, &size);
    };
    if (registerEventSource(source, u"C:\\a file.exe"_s)) {
        GTEST_SKIP() << "this account has no write access to the registry of the machine";
    }
    std::wstring file(100, L'\0');
    EXPECT_EQ(value(L"EventMessageFile", RRF_RT_REG_SZ, file.data(), 200), ERROR_SUCCESS);
    EXPECT_STREQ(file.c_str(), L"C:\\a file.exe");
    DWORD types = 0;
    EXPECT_EQ(value(L"TypesSupported", RRF_RT_REG_DWORD, &types, sizeof(types)), ERROR_SUCCESS);
    EXPECT_EQ(types, 7u);
    EXPECT_EQ(removeEventSource(source), std::nullopt);
    EXPECT_EQ(value(L"TypesSupported", RRF_RT_REG_DWORD, &types, sizeof(types)),
              ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(removeEventSource(source), std::nullopt) << "may be removed again";
}

} // namespace
} // namespace quorin::platform
