#pragma once

// The system's memory allocator, where its habits show.
namespace platform {

// Suits the heap of this process to a gateway's threads, whose number the settings say and which
// all need much memory for a short time: it is split among few of them, so that it soon is as large
// as it gets, and keeps some MiB that were given back, which the next piece of a file needs. For a
// program's beginning; a library leaves this to its host.
void suitHeapToWorkers() noexcept;

} // namespace platform
