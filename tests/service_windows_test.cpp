// The service: installed by the built program, started by the system's service manager. Needs the
// rights of an administrator and a machine without a gateway.

#include "platform/folders.h"
#include "platform/windows/handle.h"
#include "support/client.h"
#include "support/deadline.h"
#include "support/free_port.h"
#include "support/messages.h"
#include "support/paused_download.h"
#include "support/settings.h"
#include "support/site.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <type_traits>
#include <vector>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

using namespace Qt::StringLiterals;

namespace quorin::test {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

struct ServiceCloser {
    void operator()(SC_HANDLE handle) const noexcept { CloseServiceHandle(handle); }
};
using ServiceHandle = std::unique_ptr<std::remove_pointer_t<SC_HANDLE>, ServiceCloser>;

const wchar_t* wide(const QString& text) {
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

void store(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(content), content.size());
}

std::string contentOf(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll().toStdString();
}

class ServiceTest : public testing::Test {
protected:
    void SetUp() override {
        if (!manager_) {
            GTEST_SKIP() << "this account may not install services";
        }
        if (!QFile::exists(product_ + kClaim) &&
            QDirIterator(top_, QDir::Files, QDirIterator::Subdirectories).hasNext()) {
            qFatal("%s holds data of a gateway; these tests need a machine of their own",
                   qUtf8Printable(top_));
        }
        QDir(top_).removeRecursively();
    }

    void TearDown() override {
        if (manager_) {
            run({u"uninstall"_s, u"--name"_s, name_});
            EXPECT_TRUE(waitUntil([this] { return !open(); }));
            QDir(top_).removeRecursively();
        }
    }

    // Runs `quorin-gateway service` and returns its exit code.
    int run(const QStringList& arguments) {
        QProcess process;
        process.setWorkingDirectory(folder_.path());
        process.start(QStringLiteral(QUORIN_PROGRAM), QStringList(u"service"_s) + arguments);
        EXPECT_TRUE(process.waitForFinished(kTestTimeoutMs));
        output_ = process.readAllStandardOutput().replace("\r\n", "\n").toStdString();
        errors_ = process.readAllStandardError().replace("\r\n", "\n").toStdString();
        return process.exitCode();
    }

    // The settings file is given relative to the working directory of the command.
    int install() { return run({u"install"_s, u"--name"_s, name_, settingsName_, u"primary"_s}); }

    void writeSettings() {
        Settings settings;
        port_.emplace();
        settings.Port = port_->text();
        store(folder_.filePath(settingsName_), settings.toXml());
    }

    [[nodiscard]] ServiceHandle open() const {
        return ServiceHandle(OpenServiceW(manager_.get(), wide(name_), SERVICE_ALL_ACCESS));
    }

    [[nodiscard]] SERVICE_STATUS_PROCESS status() const {
        SERVICE_STATUS_PROCESS status{};
        DWORD needed = 0;
        EXPECT_TRUE(QueryServiceStatusEx(open().get(), SC_STATUS_PROCESS_INFO,
                                         reinterpret_cast<BYTE*>(&status), sizeof(status),
                                         &needed));
        return status;
    }

    [[nodiscard]] bool waitFor(DWORD state) const {
        return waitUntil([&] { return status().dwCurrentState == state; });
    }

    void start() const { ASSERT_TRUE(StartServiceW(open().get(), 0, nullptr)) << GetLastError(); }

    void requestStop() const {
        SERVICE_STATUS status{};
        ASSERT_TRUE(ControlService(open().get(), SERVICE_CONTROL_STOP, &status)) << GetLastError();
        EXPECT_EQ(status.dwCurrentState, DWORD{SERVICE_STOP_PENDING});
    }

    // The texts of the files in the log folder.
    [[nodiscard]] std::string log() const {
        QByteArray text;
        const QDir folder(product_ + u"/log");
        for (const QString& name : folder.entryList(QDir::Files)) {
            QFile file(folder.filePath(name));
            text += file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        }
        return text.toStdString();
    }

    const ServiceHandle manager_{OpenSCManagerW(nullptr, nullptr, SC_MANAGER_ALL_ACCESS)};
    const QString name_ = u"QuorinTest%1"_s.arg(QCoreApplication::applicationPid());
    const QString top_ = platform::commonApplicationDataFolder() + u"/Vemo";
    const QString product_ = top_ + u"/Quorin5";
    const QTemporaryDir folder_{QDir::tempPath() + u"/quorin service XXXXXX"};
    const QString settingsName_ = u"settings größer.xml"_s;
    std::optional<FreePort> port_;
    std::string output_; // of run()
    std::string errors_;
};

TEST_F(ServiceTest, ServesAndStops) {
    writeSettings();
    ASSERT_EQ(install(), 0) << errors_;
    EXPECT_EQ(output_, "The service " + name_.toStdString() +
                           " has been installed. To start it: sc start " + name_.toStdString() +
                           "\n");
    store(product_ + u"/QuorinGatewayHttp/wwwroot/fwfiles/file.bin", "content");
    start();
    ASSERT_TRUE(waitFor(SERVICE_RUNNING)) << log();
    EXPECT_EQ(exchange(port_->number(), get("/fwfiles/file.bin")), streamedReply("content"));
    requestStop();
    ASSERT_TRUE(waitFor(SERVICE_STOPPED));
    EXPECT_EQ(status().dwWin32ExitCode, DWORD{NO_ERROR});
    EXPECT_THAT(log(), HasSubstr("quit command recieved"));
    EXPECT_THAT(log(), HasSubstr("primary : [Status] Success"));

    start();
    ASSERT_TRUE(waitFor(SERVICE_RUNNING)) << "can be started again";
    EXPECT_EQ(run({u"uninstall"_s, u"--name"_s, name_}), 0) << errors_;
    EXPECT_EQ(output_,
              "The service " + name_.toStdString() + " has been removed. Its folders remain.\n");
    // The system removes it when the process has ended.
    EXPECT_TRUE(
        waitUntil([this] { return !open() && GetLastError() == ERROR_SERVICE_DOES_NOT_EXIST; }));
    EXPECT_TRUE(QFile::exists(product_ + u"/QuorinGatewayHttp/wwwroot/fwfiles/file.bin"));
}

TEST_F(ServiceTest, StopWaitsUntilProcessHasEnded) {
    writeSettings();
    ASSERT_EQ(install(), 0) << errors_;
    start();
    ASSERT_TRUE(waitFor(SERVICE_RUNNING)) << log();
    const platform::Handle process(OpenProcess(SYNCHRONIZE, FALSE, status().dwProcessId));
    ASSERT_NE(process, nullptr);
    for (int repetition = 0; repetition < 2; ++repetition) { // the second time, it has stopped
        EXPECT_EQ(run({u"stop"_s, u"--name"_s, name_}), 0) << errors_;
        EXPECT_EQ(output_, "The service " + name_.toStdString() + " has been stopped.\n");
        EXPECT_EQ(WaitForSingleObject(process.get(), 0), DWORD{WAIT_OBJECT_0});
        EXPECT_EQ(status().dwCurrentState, DWORD{SERVICE_STOPPED});
    }
    EXPECT_THAT(log(), HasSubstr("primary : [Status] Success"));
}

TEST_F(ServiceTest, StopReportsMissingService) {
    EXPECT_EQ(run({u"stop"_s, u"--name"_s, name_}), 1);
    EXPECT_THAT(errors_, HasSubstr("quorin-gateway: cannot open the service: "));
}

TEST_F(ServiceTest, IsConfigured) {
    ASSERT_EQ(install(), 0) << errors_;
    EXPECT_THAT(errors_, HasSubstr("größer.xml does not exist yet"));
    std::vector<BYTE> buffer(8192);
    DWORD needed = 0;
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
    ASSERT_TRUE(QueryServiceConfigW(open().get(), config, 8192, &needed));
    const QString settings = QDir::toNativeSeparators(folder_.filePath(settingsName_));
    const QString program = QDir::toNativeSeparators(QStringLiteral(QUORIN_PROGRAM));
    const QString command = QString::fromWCharArray(config->lpBinaryPathName);
    EXPECT_TRUE(command.endsWith(program.section(u'\\', -3) +
                                 u"\" \"service\" \"run\" \"--name\" \"" + name_ + u"\" \"" +
                                 settings + u"\" \"primary\""))
        << command.toStdString();
    EXPECT_TRUE(command.startsWith(u'"'));
    EXPECT_EQ(QString::fromWCharArray(config->lpServiceStartName), u"NT SERVICE\\"_s + name_);
    EXPECT_EQ(config->dwStartType, DWORD{SERVICE_AUTO_START});
    EXPECT_EQ(config->dwServiceType, DWORD{SERVICE_WIN32_OWN_PROCESS});
    auto* const description = reinterpret_cast<SERVICE_DESCRIPTIONW*>(buffer.data());
    ASSERT_TRUE(QueryServiceConfig2W(open().get(), SERVICE_CONFIG_DESCRIPTION, buffer.data(), 8192,
                                     &needed));
    EXPECT_THAT(QString::fromWCharArray(description->lpDescription).toStdString(),
                HasSubstr("to the workstations"));
}

TEST_F(ServiceTest, InstallCopiesSample) {
    store(folder_.filePath(u"sample.xml"_s), "sample");
    const QStringList arguments{u"install"_s, u"--sample"_s, u"sample.xml"_s, u"--name"_s,
                                name_,        settingsName_, u"primary"_s};
    ASSERT_EQ(run(arguments), 0) << errors_;
    EXPECT_EQ(contentOf(folder_.filePath(settingsName_)), "sample");
    EXPECT_THAT(errors_, Not(HasSubstr("does not exist yet")));

    store(folder_.filePath(settingsName_), "edited");
    ASSERT_EQ(run({u"uninstall"_s, u"--name"_s, name_}), 0) << errors_;
    QDir(top_).removeRecursively();
    ASSERT_EQ(run(arguments), 0) << errors_;
    EXPECT_EQ(contentOf(folder_.filePath(settingsName_)), "edited");
}

TEST_F(ServiceTest, InstallIsUndoneWithoutSample) {
    EXPECT_EQ(run({u"install"_s, u"--sample"_s, u"missing.xml"_s, u"--name"_s, name_, settingsName_,
                   u"primary"_s}),
              1);
    EXPECT_THAT(errors_, HasSubstr("cannot copy missing.xml to "));
    EXPECT_EQ(open(), nullptr);
}

TEST_F(ServiceTest, UpdateKeepsChangesOfAdministrator) {
    const QStringList arguments{u"install"_s, u"--update"_s, u"--name"_s,
                                name_,        settingsName_, u"secondary"_s};
    ASSERT_EQ(install(), 0) << errors_;
    ASSERT_TRUE(ChangeServiceConfigW(open().get(), SERVICE_NO_CHANGE, SERVICE_DEMAND_START,
                                     SERVICE_NO_CHANGE, nullptr, nullptr, nullptr, nullptr, nullptr,
                                     nullptr, nullptr));
    store(top_ + u"/file", "of another account");
    EXPECT_EQ(run(arguments), 0) << errors_;
    EXPECT_THAT(output_, HasSubstr("has been updated"));
    std::vector<BYTE> buffer(8192);
    DWORD needed = 0;
    auto* const config = reinterpret_cast<QUERY_SERVICE_CONFIGW*>(buffer.data());
    ASSERT_TRUE(QueryServiceConfigW(open().get(), config, 8192, &needed));
    EXPECT_THAT(QString::fromWCharArray(config->lpBinaryPathName).toStdString(),
                EndsWith(" \"secondary\""));
    EXPECT_EQ(config->dwStartType, DWORD{SERVICE_DEMAND_START});
}

TEST_F(ServiceTest, UpdateInstallsMissingService) {
    ASSERT_EQ(run({u"install"_s, u"--update"_s, u"--name"_s, name_, settingsName_, u"primary"_s}),
              0)
        << errors_;
    EXPECT_THAT(output_, HasSubstr("has been installed"));
    EXPECT_NE(open(), nullptr);
    EXPECT_TRUE(QDir(product_ + u"/log").exists());
}

TEST_F(ServiceTest, CreatesFolders) {
    ASSERT_EQ(install(), 0) << errors_;
    for (const char16_t* folder :
         {u"QuorinGatewayHttp/wwwroot/fwfiles", u"QuorinGatewayHttp/wwwroot/patterns",
          u"QuorinGatewayHttp/wwwroot/plugins", u"QuorinGatewayHttp/wwwroot/notifications",
          u"QuorinGatewayApp/NotificationTmp", u"log"}) {
        EXPECT_TRUE(QDir(product_ + u'/' + QStringView(folder)).exists());
    }
}

TEST_F(ServiceTest, InstallRefusesFolderOfUser) {
    ASSERT_TRUE(QDir().mkpath(top_));
    EXPECT_EQ(install(), 1);
    EXPECT_THAT(errors_, HasSubstr("exists, and accounts other than administrators can change it"));
    EXPECT_THAT(errors_, HasSubstr("\n  icacls \""));
    EXPECT_EQ(open(), nullptr);
    EXPECT_FALSE(QDir(product_).exists());
}

TEST_F(ServiceTest, FailedStartReportsExitCode) {
    ASSERT_EQ(install(), 0) << errors_;
    start();
    ASSERT_TRUE(waitFor(SERVICE_STOPPED));
    EXPECT_EQ(status().dwWin32ExitCode, DWORD{ERROR_SERVICE_SPECIFIC_ERROR});
    EXPECT_EQ(status().dwServiceSpecificExitCode, 1u) << "there is no settings file";
}

TEST_F(ServiceTest, SecondGatewayReportsExitCode) {
    writeSettings();
    ASSERT_EQ(install(), 0) << errors_;
    QProcess first;
    first.start(QStringLiteral(QUORIN_PROGRAM),
                {u"run"_s, folder_.filePath(settingsName_), u"primary"_s});
    ASSERT_TRUE(Client(port_->number()).isConnected());
    start();
    ASSERT_TRUE(waitFor(SERVICE_STOPPED));
    EXPECT_EQ(status().dwWin32ExitCode, DWORD{ERROR_SERVICE_SPECIFIC_ERROR});
    EXPECT_EQ(status().dwServiceSpecificExitCode, 2u);
    EXPECT_EQ(QProcess::execute(QStringLiteral(QUORIN_PROGRAM), {u"stop"_s}), 0);
    EXPECT_TRUE(first.waitForFinished(kTestTimeoutMs));
}

TEST_F(ServiceTest, StopFinishesDownload) {
    writeSettings();
    ASSERT_EQ(install(), 0) << errors_;
    const QByteArray content(kLargeSize, 'x');
    store(product_ + u"/QuorinGatewayHttp/wwwroot/fwfiles/large.bin", content);
    start();
    ASSERT_TRUE(waitFor(SERVICE_RUNNING)) << log();
    const auto client = startDownload(port_->number(), "/fwfiles/large.bin", kLargeSize);
    requestStop();
    // The client does not read: the service cannot stop before it has shown progress.
    EXPECT_TRUE(waitUntil([this] { return status().dwCheckPoint >= 3; }));
    EXPECT_EQ(status().dwCurrentState, DWORD{SERVICE_STOP_PENDING});
    EXPECT_GT(status().dwWaitHint, 0u);
    EXPECT_TRUE(client->readToEnd() == content);
    ASSERT_TRUE(waitFor(SERVICE_STOPPED));
    EXPECT_EQ(status().dwWin32ExitCode, DWORD{NO_ERROR});
}

// Run without the manager, for example by an administrator who copies the command line.
TEST_F(ServiceTest, RunByHandExplainsItself) {
    writeSettings();
    EXPECT_EQ(run({u"run"_s, u"--name"_s, name_, settingsName_, u"primary"_s}), 64);
    EXPECT_THAT(errors_, HasSubstr("'service run' is only for the service manager"));
}

TEST_F(ServiceTest, UninstallReportsMissingService) {
    EXPECT_EQ(run({u"uninstall"_s, u"--name"_s, name_}), 1);
    EXPECT_THAT(errors_, HasSubstr("cannot open the service: "));
}

// Every event has its text in the program that is registered as the event source.
TEST(EventMessagesTest, ProgramContainsTexts) {
    const HMODULE program =
        LoadLibraryExW(wide(QDir::toNativeSeparators(QStringLiteral(QUORIN_PROGRAM))), nullptr,
                       LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(program, nullptr) << GetLastError();
    for (const DWORD message : {0x40000001u, 0x40000002u, 0xC0000003u, 0xC0000004u, 0x80000005u}) {
        wchar_t text[100]{};
        wchar_t argument[] = L"what happened";
        DWORD_PTR values[] = {reinterpret_cast<DWORD_PTR>(argument)};
        EXPECT_NE(FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                                 program, message, 0, text, 100,
                                 reinterpret_cast<va_list*>(values)),
                  0u)
            << std::hex << message << ": " << GetLastError();
        EXPECT_EQ(QString::fromWCharArray(text).trimmed(), u"what happened"_s);
    }
    FreeLibrary(program);
}

} // namespace
} // namespace quorin::test
