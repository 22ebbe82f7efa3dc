#include "server/descriptor_budget.h"

#include <algorithm>

namespace quorin {

namespace {

// Beside its connection a worker has its event loop's, the file it sends and that file's lock, and
// for a moment one more: for the stale lock of another, or the table of content types.
constexpr qintptr kOfWorker = 4;

// The control channel's, the log's, and what the process that loaded the library opens.
constexpr qintptr kSpare = 8;

} // namespace

// Either there is enough for all workers, or so few connections that each could be with a worker.
DescriptorBudget::DescriptorBudget(qintptr limit, qintptr used, int workers) {
    const qintptr free = std::max<qintptr>(limit - used - kSpare, 0);
    const qintptr connections =
        std::max(free - kOfWorker * std::max(workers, 0), free / (1 + kOfWorker));
    end_ = used + std::max<qintptr>(connections, 1);
}

} // namespace quorin
