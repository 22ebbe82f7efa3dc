#include "platform/shared_library.h"

#include <dlfcn.h>

namespace quorin::platform {

SharedLibrary SharedLibrary::load(const char* name) {
    SharedLibrary library;
    library.handle_ = dlopen(name, RTLD_NOW | RTLD_LOCAL);
    return library;
}

const char* SharedLibrary::lastError() {
    const char* const message = dlerror();
    return message != nullptr ? message : "";
}

SharedLibrary::AnyFunction SharedLibrary::symbol(const char* name) const {
    return handle_ != nullptr ? reinterpret_cast<AnyFunction>(dlsym(handle_, name)) : nullptr;
}

void SharedLibrary::unload() noexcept {
    if (handle_ != nullptr) {
        dlclose(std::exchange(handle_, nullptr));
    }
}

const char* loggingLibraryName() {
    return "liblumetrix2_x64.so";
}

const char* gatewayLibraryName() {
    return "libQuorinGatewayHttp.so";
}

} // namespace quorin::platform
