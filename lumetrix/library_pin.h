#pragma once

namespace lumetrix {

// Keeps this library loaded for the lifetime of the object, even if the host unloads it. Needed by
// every object that runs a thread in the library's code.
class LibraryPin {
public:
    LibraryPin();
    ~LibraryPin();

    LibraryPin(const LibraryPin&) = delete;
    LibraryPin& operator=(const LibraryPin&) = delete;

private:
    void* library_ = nullptr; // null if there is no library to pin
};

} // namespace lumetrix
