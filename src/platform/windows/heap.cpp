#include "platform/heap.h"

namespace platform {

// A process has one heap here.
void shareOneHeap() noexcept {}

} // namespace platform
