#pragma once

#include <QtGlobal>

#include <optional>

namespace quorin::test {

// What the system says of a running process.
struct ProcessFigures {
    qint64 residentBytes = 0; // anonymous memory in use; files it has mapped do not count
    int descriptors = 0;
    int threads = 0;
};

// Nothing where this system does not tell, or the process has gone.
[[nodiscard]] std::optional<ProcessFigures> processFigures(qint64 processId);

} // namespace quorin::test
