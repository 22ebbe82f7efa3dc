// A host that passes all its arguments to the gateway library unchanged.

#include "platform/shared_library.h"
#include "support/leak_check.h"

#include <cstdio>

namespace {

int runGateway(int argc, char** argv) {
    const auto library =
        quorin::platform::SharedLibrary::load(quorin::platform::gatewayLibraryName());
    auto* const mainFunc = library.function<int(int, char**)>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        std::fprintf(stderr, "test host: %s\n", quorin::platform::SharedLibrary::lastError());
        return 99;
    }
    return mainFunc(argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    const int result = runGateway(argc, argv);
    quorin::test::checkForLeaks();
    return result;
}
