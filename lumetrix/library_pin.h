#pragma once

namespace lumetrix {

// Keeps this library loaded for the lifetime of the object. Required by every object that runs a
// thread in the library's code: without it, the process would crash if the host unloaded the
// library while the thread runs.
class LibraryPin {
public:
    LibraryPin();
    ~LibraryPin();

    LibraryPin(const LibraryPin&) = delete;
    LibraryPin& operator=(const LibraryPin&) = delete;

private:
    void* library_ = nullptr; // null if this code is not in a shared library
};

} // namespace lumetrix
