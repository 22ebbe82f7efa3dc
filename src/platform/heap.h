#pragma once

// The system's memory allocator, where its habits show.
namespace platform {

// Has all threads of this process share one heap, where the system would give each of some threads
// its own: those grow apart and keep what they had, so that a gateway that runs for long takes more
// than half as much again. For a program's beginning; a library leaves this to its host.
void shareOneHeap() noexcept;

} // namespace platform
