// A host that hands its own arguments to the gateway library as they are, however many.

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
