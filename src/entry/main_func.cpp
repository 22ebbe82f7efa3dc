#include "entry/main_func.h"

#include "entry/gateway_run.h"

#include <cstdlib>

int QuorinGatewayHttpMainFunc(int argc, char** argv) {
    constexpr int duplicateInstance = 2;
    switch (quorin::runGateway(argc, argv)) {
    case quorin::Outcome::Failed:
        std::exit(EXIT_FAILURE);
    case quorin::Outcome::DuplicateInstance:
        std::exit(duplicateInstance);
    case quorin::Outcome::Stopped:
        break;
    }
    return 0;
}
