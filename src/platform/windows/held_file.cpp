#include "platform/held_file.h"

#include "platform/windows/handle.h"

#include <QFile>

#include <utility>

namespace quorin::platform {

namespace {

Handle openFile(const QString& path, DWORD access, DWORD sharing, DWORD disposition, DWORD flags) {
    return ownHandle(
        CreateFileW(wide(path), access, sharing, nullptr, disposition, flags, nullptr));
}

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The system removes the file with its last handle. Others may only read it until then.
class TemporaryFile final : public HeldFile {
public:
    explicit TemporaryFile(Handle handle) : handle_(std::move(handle)) {}

private:
    Handle handle_;
};

} // namespace

std::unique_ptr<HeldFile> HeldFile::create(const QString& path, const QByteArray& content) {
    Handle file = openFile(path, GENERIC_WRITE | DELETE, FILE_SHARE_READ, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL | FILE_FLAG_DELETE_ON_CLOSE);
    DWORD written = 0;
    if (!file ||
        WriteFile(file.get(), content.constData(), static_cast<DWORD>(content.size()), &written,
                  nullptr) == FALSE ||
        written != static_cast<DWORD>(content.size())) {
        return nullptr;
    }
    return std::make_unique<TemporaryFile>(std::move(file));
}

std::optional<QByteArray> HeldFile::read(const QString& path) {
    // A file that a power failure left can be opened for writing.
    const Handle writable =
        openFile(path, GENERIC_WRITE, kShareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    if (writable || GetLastError() != ERROR_SHARING_VIOLATION) {
        return std::nullopt;
    }
    const Handle file =
        openFile(path, GENERIC_READ, kShareAll, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL);
    QByteArray content(64 * 1024, '\0');
    DWORD size = 0;
    if (!file || ReadFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &size,
                          nullptr) == FALSE) {
        size = 0;
    }
    content.truncate(static_cast<qsizetype>(size));
    return content;
}

} // namespace quorin::platform
