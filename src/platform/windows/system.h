#pragma once

// The system's own header, without its rarely used parts and its min and max macros, and the one
// place where our text becomes the system's.

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <QString>

namespace quorin::platform {

// The wide text of `text`, as long as `text` lives unchanged.
[[nodiscard]] inline const wchar_t* wide(const QString& text) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t), "a wide string is UTF-16 on this system");
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

} // namespace quorin::platform
