#include "platform/heap.h"

#include <cstdlib> // tells which C library this is

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace platform {

void suitHeapToWorkers() noexcept {
#ifdef __GLIBC__
    // As many parts as the smallest machines have cores. With four memory grew by 7 % from the
    // second to the tenth minute of a mixed load; with one, sixteen clients over TLS wait for each
    // other.
    mallopt(M_ARENA_MAX, 2);
    // The buffers that a connection over TLS sends a piece through, and half as much again.
    constexpr int kKept = 4 * 1024 * 1024;
    mallopt(M_TRIM_THRESHOLD, kKept);
    mallopt(M_MMAP_THRESHOLD, kKept);
#endif
}

} // namespace platform
