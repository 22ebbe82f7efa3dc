#pragma once

// Includes windows.h without its rarely used parts and its min and max macros, and converts strings
// for its functions.

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <QString>

namespace quorin::platform {

// Returns `text` as a NUL-terminated wide string, valid until `text` is changed or destroyed.
[[nodiscard]] inline const wchar_t* wide(const QString& text) {
    static_assert(sizeof(wchar_t) == sizeof(char16_t), "wide strings are in UTF-16 on Windows");
    return reinterpret_cast<const wchar_t*>(text.utf16());
}

} // namespace quorin::platform
