#include "platform/heap.h"

namespace platform {

// All threads of a process share one heap here, which looks after itself.
void suitHeapToWorkers() noexcept {}

} // namespace platform
