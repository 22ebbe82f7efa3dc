#include "../library_pin.h"

#include <dlfcn.h>

namespace lumetrix {
namespace {

const char anchor = 0; // its address identifies this library

} // namespace

LibraryPin::LibraryPin() {
    Dl_info self{};
    if (dladdr(&anchor, &self) != 0) {
        library_ = dlopen(self.dli_fname, RTLD_LAZY | RTLD_NOLOAD);
    }
}

LibraryPin::~LibraryPin() {
    if (library_) {
        dlclose(library_);
    }
}

} // namespace lumetrix
