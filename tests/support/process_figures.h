#pragma once

#include <QtGlobal>

#include <optional>

namespace quorin::test {

// Resource usage of a running process.
struct ProcessFigures {
    qint64 residentBytes = 0; // resident anonymous memory, without mapped files
    int descriptors = 0;
    int threads = 0;
};

// Returns the usage, or nothing if the system does not report it or the process does not exist.
[[nodiscard]] std::optional<ProcessFigures> processFigures(qint64 processId);

} // namespace quorin::test
