#include "platform/shared_library.h"

#include "platform/windows/own_folder.h"
#include "platform/windows/system.h"

#include <array>

namespace quorin::platform {

namespace {

// An array because it needs no destructor: a thread may outlive the library that contains this
// code.
thread_local std::array<char, 512> lastErrorText{};

// Stores the system's message for `error` in UTF-8, truncated if necessary, or the error number if
// there is no message.
void storeError(DWORD error) {
    std::array<wchar_t, 256> text{};
    const DWORD length = FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, error, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
    const QByteArray message =
        length > 0
            ? QString::fromWCharArray(text.data(), static_cast<int>(length)).trimmed().toUtf8()
            : QByteArray::number(static_cast<qulonglong>(error));
    qstrncpy(lastErrorText.data(), message.constData(), lastErrorText.size());
}

} // namespace

SharedLibrary SharedLibrary::load(const char* name) {
    const QString file = QString::fromUtf8(name);
    SharedLibrary library;
    library.handle_ = LoadLibraryW(wide(file));
    const DWORD error = library.handle_ != nullptr ? ERROR_SUCCESS : GetLastError();
    storeError(error);
    if (error == ERROR_MOD_NOT_FOUND && !file.contains(u'\\') && !file.contains(u'/')) {
        library.handle_ =
            LoadLibraryExW(wide(ownFolder() + file), nullptr,
                           LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
    }
    return library;
}

const char* SharedLibrary::lastError() {
    return lastErrorText.data();
}

SharedLibrary::AnyFunction SharedLibrary::symbol(const char* name) const {
    return handle_ != nullptr
               ? reinterpret_cast<AnyFunction>(GetProcAddress(static_cast<HMODULE>(handle_), name))
               : nullptr;
}

void SharedLibrary::unload() noexcept {
    if (handle_ != nullptr) {
        FreeLibrary(static_cast<HMODULE>(std::exchange(handle_, nullptr)));
    }
}

const char* loggingLibraryName() {
    return "liblumetrix2_x64.dll";
}

const char* gatewayLibraryName() {
    return "libQuorinGatewayHttp.dll";
}

} // namespace quorin::platform
