#pragma once

#include <QtGlobal>

#include <optional>
#include <string>

namespace quorin::test {

// Resource usage of a running process.
struct ProcessFigures {
    qint64 privateBytes = 0; // memory of the process alone, without mapped files
    int descriptors = 0;     // handles on Windows
    int threads = 0;
};

// The greatest number of descriptors that Qt opens for the event loop of a thread.
extern const int kDescriptorsPerThread;

// Returns what the descriptors of a process refer to, a line each, for the message of a failed
// test. Empty on systems that do not list them.
[[nodiscard]] std::string describeDescriptors(qint64 processId);

// The greatest number of descriptors that a process opens late and keeps, however long it runs.
extern const int kDescriptorsOpenedLate;

// The greatest size of the memory that an idle thread keeps, in bytes, where it is considerable.
extern const qint64 kMemoryPerThread;

// Returns the usage, or nothing if the process does not exist.
[[nodiscard]] std::optional<ProcessFigures> processFigures(qint64 processId);

} // namespace quorin::test
