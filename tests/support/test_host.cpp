// A host that passes all its arguments to the gateway library unchanged. Sets the C locale named by
// QUORIN_TEST_LOCALE.

#include "platform/shared_library.h"
#include "support/leak_check.h"
#include "support/system_doubles.h"

#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace {

int runGateway(int argc, char** argv) {
    const auto library =
        quorin::platform::SharedLibrary::load(quorin::platform::gatewayLibraryName());
    auto* const mainFunc = library.function<int(int, char**)>("QuorinGatewayHttpMainFunc");
    if (mainFunc == nullptr) {
        std::fprintf(stderr, "test host: %s\n", quorin::platform::SharedLibrary::lastError());
        return 99;
    }
    quorin::test::installSystemDoubles();
    return mainFunc(argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    if (const char* const locale = std::getenv("QUORIN_TEST_LOCALE")) {
        std::setlocale(LC_ALL, locale);
    }
    const int result = runGateway(argc, argv);
    quorin::test::reportMisuseOfSystemDoubles();
    quorin::test::checkForLeaks();
    return result;
}
