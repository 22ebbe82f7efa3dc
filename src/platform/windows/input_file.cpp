#include "platform/input_file.h"

#include "platform/windows/extended_path.h"
#include "platform/windows/system.h"

#include <algorithm>

namespace quorin::platform {

namespace {

// QFile opens files without FILE_SHARE_DELETE: while one is being sent, no other process could
// rename or delete it. QFile accepts a descriptor of the C runtime that was opened otherwise, but a
// process can have only 2,048 of them (msvcrt.dll) or 8,192 (ucrtbase.dll), while MaxUserSession
// has no limit, and Qt would have to use the same C runtime. A handle has neither restriction.
class InputFile : public QIODevice {
public:
    explicit InputFile(HANDLE handle) : handle_(handle) {}
    ~InputFile() override { CloseHandle(handle_); }

    qint64 size() const override {
        LARGE_INTEGER size{};
        return GetFileSizeEx(handle_, &size) != FALSE ? size.QuadPart : 0;
    }

    bool seek(qint64 position) override {
        LARGE_INTEGER distance{};
        distance.QuadPart = position;
        return QIODevice::seek(position) &&
               SetFilePointerEx(handle_, distance, nullptr, FILE_BEGIN) != FALSE;
    }

protected:
    qint64 readData(char* data, qint64 maxSize) override {
        qint64 total = 0;
        while (total < maxSize) {
            DWORD count = 0;
            const auto wanted = static_cast<DWORD>(std::min(maxSize - total, kMaxReadSize));
            if (ReadFile(handle_, data + total, wanted, &count, nullptr) == FALSE) {
                return total > 0 ? total : -1;
            }
            if (count == 0) {
                break;
            }
            total += count;
        }
        return total;
    }

    qint64 writeData(const char* /*data*/, qint64 /*size*/) override { return -1; }

private:
    // Larger reads can exceed the system's resources, for example on a network drive.
    static constexpr qint64 kMaxReadSize = qint64{32} * 1024 * 1024;

    HANDLE handle_;
};

} // namespace

std::unique_ptr<QIODevice> openForReading(const QString& path) {
    const HANDLE handle = CreateFileW(wide(extendedPath(path)), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return nullptr;
    }
    auto file = std::make_unique<InputFile>(handle);
    file->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    return file;
}

} // namespace quorin::platform
