#include "support/unreadable_file.h"

#include "platform/windows/system.h"

#include <gtest/gtest.h>

namespace quorin::test {

class UnreadableFile::Holder {
public:
    explicit Holder(const QString& path)
        : handle_(CreateFileW(platform::wide(path), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                              FILE_FLAG_DELETE_ON_CLOSE, nullptr)) {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << GetLastError();
    }
    ~Holder() { CloseHandle(handle_); }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

private:
    HANDLE handle_;
};

UnreadableFile::UnreadableFile(const QString& path) : holder_(std::make_unique<Holder>(path)) {}

UnreadableFile::~UnreadableFile() = default;

} // namespace quorin::test
