#include "platform/folders.h"

#include "platform/windows/system.h"

#include <dbghelp.h>
#include <shlobj.h>
#include <shlwapi.h>

#include <QByteArray>
#include <QDir>

#include <array>
#include <memory>
#include <optional>
#include <type_traits>

namespace quorin::platform {

namespace {

struct FreeLibraryDeleter {
    void operator()(HMODULE module) const noexcept { FreeLibrary(module); }
};
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeLibraryDeleter>;

// Converts `text` to the ANSI code page. Returns nothing if the code page lacks one of the
// characters.
std::optional<QByteArray> toAnsi(const QString& text) {
    const int length = static_cast<int>(text.size());
    if (length == 0) {
        return QByteArray();
    }
    constexpr DWORD flags = WC_NO_BEST_FIT_CHARS;
    BOOL lossy = FALSE;
    const int size =
        WideCharToMultiByte(CP_ACP, flags, wide(text), length, nullptr, 0, nullptr, &lossy);
    if (size <= 0 || lossy != FALSE) {
        return std::nullopt;
    }
    QByteArray ansi(size, Qt::Uninitialized);
    WideCharToMultiByte(CP_ACP, flags, wide(text), length, ansi.data(), size, nullptr, nullptr);
    return ansi;
}

} // namespace

bool shellFoldersAvailable() {
    return Module(LoadLibraryW(L"shell32.dll")) != nullptr;
}

QString commonApplicationDataFolder() {
    std::array<wchar_t, MAX_PATH> folder{};
    if (SHGetSpecialFolderPathW(nullptr, folder.data(), CSIDL_COMMON_APPDATA, FALSE) == FALSE) {
        return {};
    }
    return QString::fromWCharArray(folder.data());
}

QString commonApplicationDataFolderForLog() {
    std::array<char, MAX_PATH> folder{};
    if (SHGetFolderPathA(nullptr, CSIDL_COMMON_APPDATA, nullptr, SHGFP_TYPE_CURRENT,
                         folder.data()) != S_OK) {
        return {};
    }
    return QString::fromLocal8Bit(folder.data()); // from the ANSI code page
}

QString joinPath(const QString& left, const QString& right) {
    constexpr QChar separator = u'\\';
    const QStringView rest(right);
    return left + separator + (rest.startsWith(separator) ? rest.mid(1) : rest);
}

QString runtimeFolder() {
    return joinPath(joinPath(commonApplicationDataFolder(), kProductFolder.toString()),
                    kLogFolder.toString());
}

bool canCreateFilesIn(const QString& path) {
    // Opens the directory with the right to add files, which checks the right and adds none.
    const HANDLE directory = CreateFileW(
        wide(path), FILE_ADD_FILE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
        OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (directory == INVALID_HANDLE_VALUE) {
        return false;
    }
    CloseHandle(directory);
    return isDirectory(path);
}

// The ANSI functions are used for every path that the ANSI code page can represent, the wide
// functions for all others.

bool isDirectory(const QString& path) {
    if (const std::optional<QByteArray> ansi = toAnsi(path)) {
        return PathIsDirectoryA(ansi->constData()) != FALSE;
    }
    return PathIsDirectoryW(wide(path)) != FALSE;
}

bool makeDirectoryPath(const QString& path) {
    // MakeSureDirectoryPathExists() does not accept slashes as separators.
    const QString native = QDir::toNativeSeparators(path);
    if (const std::optional<QByteArray> ansi = toAnsi(native + u'\\')) {
        MakeSureDirectoryPathExists(ansi->constData());
    } else {
        SHCreateDirectoryExW(nullptr, wide(native), nullptr);
    }
    return isDirectory(path);
}

} // namespace quorin::platform
