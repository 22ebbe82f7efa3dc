#pragma once

namespace lumetrix2 {

// Keeps this library in memory as long as it lives, however often the host unloads it: a thread
// that runs in the library must not lose its code.
class LibraryPin {
public:
    LibraryPin();
    ~LibraryPin();

    LibraryPin(const LibraryPin&) = delete;
    LibraryPin& operator=(const LibraryPin&) = delete;

private:
    void* library_ = nullptr; // null when this code is part of a program
};

} // namespace lumetrix2
