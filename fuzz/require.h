#pragma once

#include <cstdio>
#include <cstdlib>

// What a fuzzer claims of every input; a claim that does not hold is a finding, whose stack trace
// says where.
inline void require(bool holds, const char* what = "a claim") {
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", what);
        std::abort();
    }
}
