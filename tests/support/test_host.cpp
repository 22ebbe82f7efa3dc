// A host that passes all its arguments to the gateway library unchanged.

#include "platform/shared_library.h"

#include <cstdio>

int main(int argc, char** argv) {
    const auto library = platform::SharedLibrary::load(platform::gatewayLibraryName());
    auto* const mainFunc = library.function<int(int, char**)>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        std::fprintf(stderr, "test host: %s\n", platform::SharedLibrary::lastError());
        return 99;
    }
    return mainFunc(argc, argv);
}
