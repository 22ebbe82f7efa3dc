#include "platform/instance_guard.h"

#include "platform/windows/global_mutex.h"
#include "platform/windows/testing/access_text.h"

#include <QCoreApplication>
#include <QSharedMemory>

#include <gtest/gtest.h>

#include <string>

using namespace Qt::StringLiterals;

namespace quorin::platform {
namespace {

// Opens the mutex and returns the error of the system.
DWORD errorOfOpening(const QString& mutex, DWORD access) {
    return ownHandle(OpenMutexW(access, FALSE, wide(mutex))) ? DWORD{ERROR_SUCCESS}
                                                             : GetLastError();
}

class GlobalMutexTest : public testing::Test {
protected:
    const QString key_ =
        u"Global\\QUORIN_GLOBAL_MUTEX_TEST_%1"_s.arg(QCoreApplication::applicationPid());
    InstanceGuard guard_{key_};
};

// A gateway in another session: its mutex is visible here, its segment is not.
TEST_F(GlobalMutexTest, HoldsGuardWithoutSegment) {
    {
        const Handle mutex = ownHandle(CreateMutexW(nullptr, FALSE, wide(key_)));
        ASSERT_NE(mutex, nullptr) << GetLastError();
        EXPECT_FALSE(guard_.take());
        EXPECT_FALSE(QSharedMemory(key_).attach()) << "a failed attempt leaves no segment";
    }
    EXPECT_TRUE(guard_.take());
}

TEST_F(GlobalMutexTest, IsReleasedIfSegmentIsTaken) {
    QSharedMemory segment(key_);
    ASSERT_TRUE(segment.create(1));
    EXPECT_FALSE(guard_.take());
    EXPECT_EQ(errorOfOpening(key_, SYNCHRONIZE), DWORD{ERROR_FILE_NOT_FOUND});
}

TEST_F(GlobalMutexTest, IsVisibleButCannotBeChanged) {
    ASSERT_TRUE(guard_.take());
    EXPECT_EQ(errorOfOpening(key_, SYNCHRONIZE), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(errorOfOpening(key_, MUTEX_MODIFY_STATE), DWORD{ERROR_ACCESS_DENIED});
}

TEST_F(GlobalMutexTest, IsNotCreatedIfNameIsOfOtherObject) {
    const Handle mapping = ownHandle(
        CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, 1, wide(key_)));
    ASSERT_NE(mapping, nullptr) << GetLastError();
    EXPECT_FALSE(guard_.take());
}

// What the function below was called with.
struct Creation {
    std::string access;
    BOOL isInheritable = TRUE;
    DWORD flags = 0;
    DWORD desiredAccess = 0;
};
Creation creation;

// Wine lets every account open every mutex.
HANDLE WINAPI denyAccess(LPSECURITY_ATTRIBUTES attributes, LPCWSTR /*name*/, DWORD flags,
                         DWORD desiredAccess) {
    creation = {accessText(attributes->lpSecurityDescriptor), attributes->bInheritHandle, flags,
                desiredAccess};
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

TEST_F(GlobalMutexTest, IsNotCreatedIfAccessIsDenied) {
    EXPECT_EQ(createMutex(key_, &denyAccess), nullptr);
    EXPECT_EQ(creation.access, "D:P(A;;0x100000;;;WD)");
    EXPECT_EQ(creation.isInheritable, FALSE);
    EXPECT_EQ(creation.flags, 0U) << "no thread owns the mutex";
    EXPECT_EQ(creation.desiredAccess, DWORD{SYNCHRONIZE});
}

} // namespace
} // namespace quorin::platform
