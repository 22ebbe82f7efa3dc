#include "support/call_recorder_windows.h"

#include <winsock2.h>

#include "platform/windows/system.h"
#include "support/import_table_windows.h"

#include <QDir>
#include <QString>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <string_view>

using namespace Qt::StringLiterals;

namespace quorin::test {

namespace {

std::filesystem::path recordFile;
std::filesystem::path failingCallFile;

std::string contentOf(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

// Returns false, with the error set, if the call must fail.
bool record(const std::string& call) {
    {
        static std::mutex mutex;
        const std::lock_guard lock(mutex);
        std::ofstream file(recordFile, std::ios::binary | std::ios::app);
        if (!(file << call << '\n' << std::flush)) {
            std::abort(); // an incomplete record proves nothing
        }
    }
    if (failingCallFile.empty() || contentOf(failingCallFile) != call) {
        return true;
    }
    SetLastError(ERROR_DISK_FULL);
    return false;
}

// The path with slashes and without the prefix for long paths.
std::string portable(const wchar_t* path) {
    QString text = QDir::fromNativeSeparators(QString::fromWCharArray(path));
    constexpr QStringView prefix = u"//?/";
    return (text.startsWith(prefix) ? text.mid(prefix.size()) : text).toStdString();
}

// The path of an open file; empty if it has none, as a pipe.
std::string pathOf(HANDLE file) {
    std::array<wchar_t, 1024> path{};
    const bool isFile = GetFileType(file) == FILE_TYPE_DISK;
    return isFile && GetFinalPathNameByHandleW(file, path.data(), path.size(), 0) != 0
               ? portable(path.data())
               : std::string();
}

bool recordFileCall(const char* name, HANDLE file) {
    const std::string path = pathOf(file);
    return path.empty() || record(std::string(name) + ' ' + path);
}

BOOL WINAPI writeFile(HANDLE file, const void* data, DWORD size, DWORD* written,
                      OVERLAPPED* overlapped) {
    if (recordFileCall("write", file)) {
        return WriteFile(file, data, size, written, overlapped);
    }
    const DWORD error = GetLastError();
    WriteFile(file, data, size / 2, written, overlapped);
    SetLastError(error);
    return FALSE;
}

BOOL WINAPI flushFileBuffers(HANDLE file) {
    return recordFileCall("fsync", file) ? FlushFileBuffers(file) : FALSE;
}

BOOL WINAPI moveFileEx(const wchar_t* from, const wchar_t* to, DWORD flags) {
    const std::string target = portable(to);
    if (!record("rename " + portable(from) + ' ' + target)) {
        return FALSE;
    }
    if ((flags & MOVEFILE_WRITE_THROUGH) != 0 &&
        !record("fsync " + target.substr(0, target.rfind('/')))) {
        return FALSE;
    }
    return MoveFileExW(from, to, flags);
}

int WSAAPI wsaSend(SOCKET socket, WSABUF* buffers, DWORD count, DWORD* sent, DWORD flags,
                   WSAOVERLAPPED* overlapped, LPWSAOVERLAPPED_COMPLETION_ROUTINE routine) {
    const std::string_view text(buffers->buf, buffers->len);
    if (text.substr(0, 5) == "HTTP/" &&
        !record("send " + std::string(text.substr(0, text.find('\r'))))) {
        WSASetLastError(WSAECONNRESET);
        return SOCKET_ERROR;
    }
    return WSASend(socket, buffers, count, sent, flags, overlapped, routine);
}

} // namespace

void installCallRecorder() {
    const wchar_t* const path = _wgetenv(L"QUORIN_CALL_RECORD");
    if (path == nullptr) {
        return;
    }
    recordFile = path;
    if (const wchar_t* const failing = _wgetenv(L"QUORIN_FAILING_CALL")) {
        failingCallFile = failing;
    }
    replaceImport("WriteFile", writeFile);
    replaceImport("FlushFileBuffers", flushFileBuffers);
    replaceImport("MoveFileExW", moveFileEx);
    replaceImport("WSASend", wsaSend);
}

} // namespace quorin::test
