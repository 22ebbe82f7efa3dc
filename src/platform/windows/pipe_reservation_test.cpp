#include "platform/windows/pipe_reservation.h"

#include "platform/control_pipe.h"
#include "platform/windows/security_descriptor.h"
#include "platform/windows/testing/access_text.h"

#include <aclapi.h>

#include <QCoreApplication>
#include <QLocalSocket>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

constexpr int kTimeoutMs = 60'000;

const std::string kOpen = "open";

// Returns kOpen, or the reason why the pipe could not be opened.
std::string text(const std::optional<QString>& failure) {
    return failure ? failure->toStdString() : kOpen;
}

std::string cannotBeCreated(const QString& pipe, DWORD error) {
    const QString reason =
        u"the pipe " + pipe + u" cannot be created: " + qt_error_string(static_cast<int>(error));
    return reason.toStdString();
}

std::string expectedAccess() {
    // Converted, because Windows abbreviates the identifiers of some accounts.
    SecurityAttributes attributes(u"D:P(D;;FA;;;NU)(A;;FA;;;SY)(A;;FA;;;BA)(A;;FA;;;" +
                                  ownAccount() + u')');
    return accessText(attributes.get()->lpSecurityDescriptor);
}

std::string accessOf(const QLocalSocket& pipe) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    EXPECT_EQ(GetSecurityInfo(reinterpret_cast<HANDLE>(pipe.socketDescriptor()), SE_KERNEL_OBJECT,
                              DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr, nullptr,
                              &descriptor),
              DWORD{ERROR_SUCCESS});
    const std::string result = accessText(descriptor);
    LocalFree(descriptor);
    return result;
}

class PipeReservationTest : public testing::Test {
protected:
    std::unique_ptr<QLocalSocket> connectController() const {
        auto controller = std::make_unique<QLocalSocket>();
        controller->connectToServer(name_);
        EXPECT_TRUE(controller->waitForConnected(kTimeoutMs));
        return controller;
    }

    const QString name_ =
        u"\\\\.\\pipe\\QUORIN_RESERVATION_TEST_%1"_s.arg(QCoreApplication::applicationPid());
    const std::string inUse_ =
        QString(u"the pipe " + name_ + u" is in use by another process").toStdString();
};

TEST_F(PipeReservationTest, DeterminesAccessOfAllInstances) {
    ControlPipe pipe(name_);
    ASSERT_EQ(text(pipe.open()), kOpen);
    std::vector<std::unique_ptr<QLocalSocket>> controllers;
    for (int i = 0; i < 3; ++i) {
        controllers.push_back(connectController());
        EXPECT_EQ(accessOf(*controllers.back()), expectedAccess());
    }
}

TEST_F(PipeReservationTest, LeavesControllersToPipe) {
    ControlPipe pipe(name_);
    ASSERT_EQ(text(pipe.open()), kOpen);
    for (int i = 0; i < 3; ++i) {
        const std::unique_ptr<QLocalSocket> controller = connectController();
        controller->write("quit");
        ASSERT_TRUE(pipe.hasPendingConnections() || pipe.waitForNewConnection(kTimeoutMs));
        const std::unique_ptr<QLocalSocket> accepted(pipe.nextPendingConnection());
        ASSERT_TRUE(accepted->waitForReadyRead(kTimeoutMs));
        EXPECT_EQ(accepted->readAll(), "quit");
    }
}

TEST_F(PipeReservationTest, OffersNoInstance) {
    PipeReservation reservation;
    ASSERT_EQ(text(reservation.reserve(name_)), kOpen);
    EXPECT_EQ(ownHandle(CreateFileW(wide(name_), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr)),
              nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_PIPE_BUSY});
}

TEST_F(PipeReservationTest, IsMadeOnce) {
    PipeReservation reservation;
    EXPECT_EQ(text(reservation.reserve(name_)), kOpen);
    EXPECT_EQ(text(reservation.reserve(name_)), kOpen);
}

TEST_F(PipeReservationTest, IsReleasedWithPipe) {
    for (int i = 0; i < 2; ++i) {
        ControlPipe pipe(name_);
        EXPECT_EQ(text(pipe.open()), kOpen);
    }
}

TEST_F(PipeReservationTest, ReportsOtherPipeWithOneInstance) {
    Handle other =
        ownHandle(CreateNamedPipeW(wide(name_), PIPE_ACCESS_DUPLEX, 0, 1, 0, 0, 0, nullptr));
    ASSERT_NE(other, nullptr) << GetLastError();
    ControlPipe pipe(name_);
    EXPECT_EQ(text(pipe.open()), inUse_);
    EXPECT_FALSE(pipe.isListening());
    other.reset();
    EXPECT_EQ(text(pipe.open()), kOpen);
    EXPECT_TRUE(pipe.isListening());
}

// Refuses a second first instance as Windows does. Wine ignores the flag.
HANDLE WINAPI createFirstOnly(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD instances,
                              DWORD outBuffer, DWORD inBuffer, DWORD timeout,
                              LPSECURITY_ATTRIBUTES attributes) {
    if ((openMode & FILE_FLAG_FIRST_PIPE_INSTANCE) != 0 && WaitNamedPipeW(name, 1) != FALSE) {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return CreateNamedPipeW(name, openMode, pipeMode, instances, outBuffer, inBuffer, timeout,
                            attributes);
}

TEST_F(PipeReservationTest, ReportsOtherServer) {
    QLocalServer other;
    ASSERT_TRUE(other.listen(name_));
    PipeReservation reservation({&createFirstOnly, &CreateFileW});
    EXPECT_EQ(text(reservation.reserve(name_)), inUse_);
    other.close();
    EXPECT_EQ(text(reservation.reserve(name_)), kOpen);
}

// What the function below was called with.
struct Creation {
    DWORD openMode = 0;
    DWORD pipeMode = 0;
    DWORD instances = 0;
    DWORD timeout = 0;
    std::string access;
    BOOL isInheritable = TRUE;
};
Creation creation;

HANDLE WINAPI recordCreation(LPCWSTR name, DWORD openMode, DWORD pipeMode, DWORD instances,
                             DWORD outBuffer, DWORD inBuffer, DWORD timeout,
                             LPSECURITY_ATTRIBUTES attributes) {
    creation = {openMode,
                pipeMode,
                instances,
                timeout,
                accessText(attributes->lpSecurityDescriptor),
                attributes->bInheritHandle};
    return CreateNamedPipeW(name, openMode, pipeMode, instances, outBuffer, inBuffer, timeout,
                            attributes);
}

TEST_F(PipeReservationTest, RefusesRemoteClientsAndOtherCreators) {
    PipeReservation reservation({&recordCreation, &CreateFileW});
    ASSERT_EQ(text(reservation.reserve(name_)), kOpen);
    EXPECT_EQ(creation.openMode,
              DWORD{PIPE_ACCESS_DUPLEX | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE});
    EXPECT_EQ(creation.pipeMode, DWORD{PIPE_REJECT_REMOTE_CLIENTS}) << "bytes, blocking";
    EXPECT_EQ(creation.instances, DWORD{PIPE_UNLIMITED_INSTANCES});
    EXPECT_EQ(creation.timeout, 3000U);
    EXPECT_EQ(creation.access, expectedAccess());
    EXPECT_EQ(creation.isInheritable, FALSE);
}

HANDLE WINAPI failToCreate(LPCWSTR /*name*/, DWORD /*openMode*/, DWORD /*pipeMode*/,
                           DWORD /*instances*/, DWORD /*outBuffer*/, DWORD /*inBuffer*/,
                           DWORD /*timeout*/, LPSECURITY_ATTRIBUTES /*attributes*/) {
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
}

TEST_F(PipeReservationTest, ReportsErrorOfSystem) {
    PipeReservation reservation({&failToCreate, &CreateFileW});
    EXPECT_EQ(text(reservation.reserve(name_)), cannotBeCreated(name_, ERROR_NOT_ENOUGH_MEMORY));
}

// A controller has connected to the first instance.
HANDLE WINAPI findPipeBusy(LPCWSTR /*name*/, DWORD /*access*/, DWORD /*share*/,
                           LPSECURITY_ATTRIBUTES /*attributes*/, DWORD /*disposition*/,
                           DWORD /*flags*/, HANDLE /*like*/) {
    SetLastError(ERROR_PIPE_BUSY);
    return INVALID_HANDLE_VALUE;
}

TEST_F(PipeReservationTest, PassesOnEarlyController) {
    PipeReservation reservation({&CreateNamedPipeW, &findPipeBusy});
    ASSERT_EQ(text(reservation.reserve(name_)), kOpen);
    EXPECT_EQ(text(reservation.reserve(name_)), kOpen);
    const std::unique_ptr<QLocalSocket> controller = connectController();
    controller->write("quit");
    QLocalSocket accepted;
    ASSERT_TRUE(accepted.setSocketDescriptor(
        reinterpret_cast<qintptr>(reservation.takeEarlyController().release())));
    ASSERT_TRUE(accepted.waitForReadyRead(kTimeoutMs));
    EXPECT_EQ(accepted.readAll(), "quit");
    EXPECT_EQ(reservation.takeEarlyController(), nullptr);
}

TEST_F(PipeReservationTest, HasNoEarlyControllerIfOccupied) {
    PipeReservation reservation;
    ASSERT_EQ(text(reservation.reserve(name_)), kOpen);
    EXPECT_EQ(reservation.takeEarlyController(), nullptr);
}

} // namespace
} // namespace quorin::platform
