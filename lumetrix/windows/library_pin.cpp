#include "../library_pin.h"

#include <windows.h>

namespace lumetrix {
namespace {

const char anchor = 0; // its address identifies this library

} // namespace

LibraryPin::LibraryPin() {
    HMODULE self = nullptr;
    if (GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                           reinterpret_cast<LPCWSTR>(&anchor), &self))
        library_ = self;
}

LibraryPin::~LibraryPin() {
    if (library_)
        FreeLibrary(static_cast<HMODULE>(library_));
}

} // namespace lumetrix
