#pragma once

#include <cstdio>
#include <cstdlib>

// Checks a property that must hold for every input. If `condition` is false, prints `property` and
// aborts, which libFuzzer reports as a finding with a stack trace.
inline void require(bool condition, const char* property = "see the stack trace") {
    if (!condition) {
        std::fprintf(stderr, "requirement failed: %s\n", property);
        std::abort();
    }
}
